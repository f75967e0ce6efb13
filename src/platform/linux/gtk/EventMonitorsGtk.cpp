#include "platform/linux/gtk/EventMonitorsGtk.h"

#include "platform/linux/gtk/KeyTranslation.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace quillox {

namespace {

    constexpr std::size_t judgedEvents = 16;

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

    /// F7 makes the text widget that the engine feeds its keys to abort the program; Menu and
    /// Shift+F10 make it open a menu over the page, without asking anybody.
    bool isToolkitKey(GdkEvent* event)
    {
        const auto symbol = gdk_key_event_get_keyval(event);
        return symbol == GDK_KEY_F7 || symbol == GDK_KEY_Menu || symbol == GDK_KEY_F10;
    }

    ModifierFlags without(ModifierFlags flags, ModifierFlags removed)
    {
        return static_cast<ModifierFlags>(
            static_cast<std::uint32_t>(flags) & ~static_cast<std::uint32_t>(removed));
    }

} // namespace

void EventMonitorsGtk::attach(Gtk::Window& window, Keys keys)
{
    auto* controller = gtk_event_controller_legacy_new();
    gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
    const auto callback = keys == Keys::all
        ? G_CALLBACK(+[](GtkEventController*, GdkEvent* event, gpointer self) -> gboolean {
              return static_cast<EventMonitorsGtk*>(self)->handle(event, Keys::all);
          })
        : G_CALLBACK(+[](GtkEventController*, GdkEvent* event, gpointer self) -> gboolean {
              return static_cast<EventMonitorsGtk*>(self)->handle(event, Keys::withoutToolkits);
          });
    g_signal_connect(controller, "event", callback, this);
    gtk_widget_add_controller(GTK_WIDGET(window.gobj()), controller);
    // Releases that happen elsewhere are never seen here.
    window.property_is_active().signal_changed().connect([this] { forgetKeys(); });
}

void EventMonitorsGtk::forgetKeys()
{
    m_downKeys.clear();
    m_swallowedKeys.clear();
    m_commandKeys.clear();
    m_judged.clear();
}

Handle EventMonitorsGtk::addLocalMonitor(EventMask mask, Handler handler)
{
    const auto id = m_nextId++;
    m_monitors->emplace(id, std::make_shared<const Monitor>(Monitor { mask, std::move(handler) }));
    return Handle([monitors = m_monitors, id] { monitors->erase(id); });
}

bool EventMonitorsGtk::handle(GdkEvent* event, Keys keys)
{
    const auto type = gdk_event_get_event_type(event);
    if (type == GDK_KEY_PRESS || type == GDK_KEY_RELEASE) {
        const auto known = std::ranges::find(
            m_judged, event, [](const Judged& judged) { return judged.event.get(); });
        if (known != m_judged.end())
            return known->wasSwallowed;
        const bool isSwallowed = handleKey(event, type == GDK_KEY_PRESS)
            || (keys == Keys::withoutToolkits && isToolkitKey(event));
        if (m_judged.size() >= judgedEvents)
            m_judged.pop_front();
        m_judged.push_back(
            { std::unique_ptr<GdkEvent, EventUnref>(gdk_event_ref(event)), isSwallowed });
        return isSwallowed;
    }
    const auto pointerType = pointerTypeFor(event);
    if (!pointerType)
        return false;
    const auto flags = flagsFor(gdk_event_get_modifier_state(event));
    return ask({ .type = *pointerType, .flags = flags }) == Verdict::Swallow;
}

bool EventMonitorsGtk::handleKey(GdkEvent* event, bool isPress)
{
    const auto hardwareKey = gdk_key_event_get_keycode(event);
    const auto modifier = modifierFor(gdk_key_event_get_keyval(event));
    if (modifier == ModifierFlags::Command) {
        if (isPress)
            m_commandKeys.insert(hardwareKey);
        else
            m_commandKeys.erase(hardwareKey);
    }

    // The state of a modifier's own event is the one before it.
    auto flags = flagsFor(gdk_event_get_modifier_state(event));
    if (modifier != ModifierFlags::None && modifier != ModifierFlags::CapsLock)
        flags = isPress ? flags | modifier : without(flags, modifier);
    if (!m_commandKeys.empty())
        flags = flags | ModifierFlags::Command;

    Event translated { .type = isPress ? EventType::KeyDown : EventType::KeyUp,
        .keyCode = keyCodeFor(hardwareKey),
        .flags = flags };
    if (modifier != ModifierFlags::None)
        translated.type = EventType::FlagsChanged;
    if (isPress)
        translated.isRepeat = !m_downKeys.insert(hardwareKey).second;
    else
        m_downKeys.erase(hardwareKey);

    const bool pressWasSwallowed = !isPress && m_swallowedKeys.erase(hardwareKey) > 0;
    const bool isSwallowed = ask(translated) == Verdict::Swallow;
    if (isPress && isSwallowed)
        m_swallowedKeys.insert(hardwareKey);
    return isSwallowed || pressWasSwallowed;
}

EventMonitors::Verdict EventMonitorsGtk::ask(const Event& event)
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
