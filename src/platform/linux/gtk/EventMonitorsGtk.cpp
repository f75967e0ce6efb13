#include "platform/linux/gtk/EventMonitorsGtk.h"

#include "platform/linux/gtk/KeyTranslation.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace quillox {

namespace {

    EventType downTypeFor(unsigned button)
    {
        switch (button) {
        case GDK_BUTTON_PRIMARY:
            return EventType::LeftMouseDown;
        case GDK_BUTTON_SECONDARY:
            return EventType::RightMouseDown;
        default:
            return EventType::OtherMouseDown;
        }
    }

    EventType upTypeFor(unsigned button)
    {
        switch (button) {
        case GDK_BUTTON_PRIMARY:
            return EventType::LeftMouseUp;
        case GDK_BUTTON_SECONDARY:
            return EventType::RightMouseUp;
        default:
            return EventType::OtherMouseUp;
        }
    }

    EventType motionTypeFor(GdkModifierType state)
    {
        if (state & GDK_BUTTON1_MASK)
            return EventType::LeftMouseDragged;
        if (state & GDK_BUTTON3_MASK)
            return EventType::RightMouseDragged;
        if (state & (GDK_BUTTON2_MASK | GDK_BUTTON4_MASK | GDK_BUTTON5_MASK))
            return EventType::OtherMouseDragged;
        return EventType::MouseMoved;
    }

    /// None for what is no input of the user's, and for keys, which need their history.
    std::optional<EventType> pointerTypeFor(GdkEvent* event)
    {
        switch (gdk_event_get_event_type(event)) {
        case GDK_BUTTON_PRESS:
            return downTypeFor(gdk_button_event_get_button(event));
        case GDK_BUTTON_RELEASE:
            return upTypeFor(gdk_button_event_get_button(event));
        case GDK_MOTION_NOTIFY:
            return motionTypeFor(gdk_event_get_modifier_state(event));
        case GDK_SCROLL:
        case GDK_TOUCHPAD_SWIPE:
        case GDK_TOUCHPAD_PINCH:
            return EventType::ScrollWheel;
        case GDK_TOUCH_BEGIN:
            return EventType::LeftMouseDown;
        case GDK_TOUCH_UPDATE:
            return EventType::LeftMouseDragged;
        case GDK_TOUCH_END:
            return EventType::LeftMouseUp;
        default:
            return std::nullopt;
        }
    }

    constexpr auto watchedMark = "quillox-watched";

    ModifierFlags without(ModifierFlags flags, ModifierFlags removed)
    {
        return static_cast<ModifierFlags>(
            static_cast<std::uint32_t>(flags) & ~static_cast<std::uint32_t>(removed));
    }

} // namespace

EventMonitorsGtk::EventMonitorsGtk()
{
    // Popups come and go deep inside the engine; this is where all of them pass.
    g_type_class_unref(g_type_class_ref(GTK_TYPE_POPOVER));
    m_popupHook = g_signal_add_emission_hook(
        g_signal_lookup("map", GTK_TYPE_WIDGET), 0,
        [](GSignalInvocationHint*, guint, const GValue* values, gpointer self) -> gboolean {
            auto* widget = GTK_WIDGET(g_value_get_object(values));
            if (GTK_IS_POPOVER(widget))
                static_cast<EventMonitorsGtk*>(self)->watchPopup(widget);
            return TRUE;
        },
        this, nullptr);
}

EventMonitorsGtk::~EventMonitorsGtk()
{
    g_signal_remove_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), m_popupHook);
}

void EventMonitorsGtk::attach(Gtk::Window& window)
{
    watch(GTK_WIDGET(window.gobj()));
    window.property_is_active().signal_changed().connect([this] { handleActivation(); });
}

void EventMonitorsGtk::watch(GtkWidget* widget)
{
    auto* controller = gtk_event_controller_legacy_new();
    gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
    g_signal_connect(controller, "event",
        G_CALLBACK(+[](GtkEventController* source, GdkEvent* event, gpointer self) -> gboolean {
            return static_cast<EventMonitorsGtk*>(self)->handle(
                event, gtk_event_controller_get_widget(source));
        }),
        this);
    gtk_widget_add_controller(widget, controller);
    g_object_set_data(G_OBJECT(widget), watchedMark, this);
}

void EventMonitorsGtk::watchPopup(GtkWidget* popup)
{
    const auto isWatched
        = [](auto* object) { return g_object_get_data(G_OBJECT(object), watchedMark) != nullptr; };
    auto* root = gtk_widget_get_root(popup);
    if (root && isWatched(root) && !isWatched(popup))
        watch(popup);
}

void EventMonitorsGtk::handleActivation()
{
    // Releases that happen elsewhere are never seen here.
    if (!m_isIndependentOfFocus)
        releaseKeys();
}

void EventMonitorsGtk::releaseKeys()
{
    const auto down = std::exchange(m_downKeys, {});
    m_swallowedKeys.clear();
    m_commandKeys.clear();
    for (const auto hardwareKey : down)
        ask({ .type = EventType::KeyUp, .keyCode = keyCodeFor(hardwareKey) });
    if (!down.empty())
        ask({ .type = EventType::FlagsChanged });
}

bool EventMonitorsGtk::isKeyDown(KeyCode key) const
{
    return std::ranges::any_of(
        m_downKeys, [key](unsigned hardwareKey) { return keyCodeFor(hardwareKey) == key; });
}

Handle EventMonitorsGtk::setTap(EventMask mask, Handler handler, bool isIndependentOfFocus)
{
    m_tap = std::make_shared<const Monitor>(Monitor { mask, std::move(handler) });
    m_isIndependentOfFocus = isIndependentOfFocus;
    return Handle([this] {
        m_tap.reset();
        m_isIndependentOfFocus = false;
    });
}

Handle EventMonitorsGtk::addLocalMonitor(EventMask mask, Handler handler)
{
    const auto id = m_nextId++;
    m_monitors->emplace(id, std::make_shared<const Monitor>(Monitor { mask, std::move(handler) }));
    return Handle([monitors = m_monitors, id] { monitors->erase(id); });
}

bool EventMonitorsGtk::handle(GdkEvent* event, GtkWidget* judge)
{
    const auto type = gdk_event_get_event_type(event);
    if (type == GDK_KEY_PRESS || type == GDK_KEY_RELEASE)
        return judgeKey(event, judge);
    const auto pointerType = pointerTypeFor(event);
    if (!pointerType)
        return false;
    const auto flags = flagsFor(gdk_event_get_modifier_state(event));
    return ask({ .type = *pointerType, .flags = flags }) == Verdict::Swallow;
}

bool EventMonitorsGtk::judgeKey(GdkEvent* event, GtkWidget* judge)
{
    auto* root = gtk_widget_get_root(judge);
    const void* focus = root ? gtk_root_get_focus(root) : nullptr;
    if (const auto* known = m_judged.find(event)) {
        // Sent round again, it is for nobody else: a prompt may have the keyboard by now.
        const bool isStray = known->judge == judge && known->focus != focus;
        return known->wasSwallowed || isStray;
    }
    if (m_judged.isForgotten(event))
        return true;
    const bool isSwallowed = handleKey(event, gdk_event_get_event_type(event) == GDK_KEY_PRESS);
    m_judged.remember(event, { isSwallowed, judge, focus });
    return isSwallowed;
}

bool EventMonitorsGtk::handleKey(GdkEvent* event, bool isPress)
{
    const auto hardwareKey = gdk_key_event_get_keycode(event);
    const auto translated = translateKey(event, isPress);
    // Repeats too: the modifiers of a gesture may go up before its letter does.
    const bool pressWasSwallowed = isPress
        ? translated.isRepeat && m_swallowedKeys.contains(hardwareKey)
        : m_swallowedKeys.erase(hardwareKey) > 0;
    const bool isSwallowed = ask(translated) == Verdict::Swallow;
    if (isPress && isSwallowed)
        m_swallowedKeys.insert(hardwareKey);
    return isSwallowed || pressWasSwallowed;
}

Event EventMonitorsGtk::translateKey(GdkEvent* event, bool isPress)
{
    const auto hardwareKey = gdk_key_event_get_keycode(event);
    const auto symbol = gdk_key_event_get_keyval(event);
    const auto modifier = modifierFor(symbol);
    if (!isPress) // Whatever it is called by now.
        m_commandKeys.erase(hardwareKey);
    else if (modifier == ModifierFlags::Command)
        m_commandKeys.insert(hardwareKey);

    // The state of a modifier's own event is the one before it.
    auto flags = flagsFor(gdk_event_get_modifier_state(event));
    if (modifier != ModifierFlags::None && modifier != ModifierFlags::CapsLock)
        flags = isPress ? flags | modifier : without(flags, modifier);
    if (!m_commandKeys.empty())
        flags = flags | ModifierFlags::Command;

    Event translated { .type = isPress ? EventType::KeyDown : EventType::KeyUp,
        .keyCode = keyCodeFor(hardwareKey, symbol),
        .flags = flags };
    if (isPress)
        translated.isRepeat = !m_downKeys.insert(hardwareKey).second;
    else
        m_downKeys.erase(hardwareKey);
    if (modifier != ModifierFlags::None) {
        translated.type = EventType::FlagsChanged;
    } else if (isAuxiliaryControl(symbol)) {
        translated.type = EventType::SystemDefined;
        translated.subtype = auxiliaryControlButtons;
    }
    return translated;
}

EventMonitors::Verdict EventMonitorsGtk::ask(const Event& event)
{
    const auto tap = m_tap; // It may be taken out while it is asked.
    if (tap && (tap->mask & maskOf(event.type)) && tap->handler(event) == Verdict::Swallow)
        return Verdict::Swallow;
    return askMonitors(event);
}

EventMonitors::Verdict EventMonitorsGtk::askMonitors(const Event& event)
{
    auto verdict = Verdict::Pass;
    const auto firstNewId = m_nextId;
    for (auto entry = m_monitors->begin();
         entry != m_monitors->end() && entry->first < firstNewId;) {
        const auto id = entry->first;
        const auto monitor = entry->second; // It may end itself.
        if ((monitor->mask & maskOf(event.type)) && monitor->handler(event) == Verdict::Swallow)
            verdict = Verdict::Swallow;
        entry = m_monitors->upper_bound(id);
    }
    return verdict;
}

} // namespace quillox
