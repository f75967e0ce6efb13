#include "platform/linux/gtk/ContainerGtk.h"

#include "platform/linux/gtk/Popups.h"

#include <algorithm>
#include <cmath>

namespace quillox {

namespace {

    Rect resized(Rect frame, const Autoresizing& follows, double addedWidth, double addedHeight)
    {
        if (follows.width)
            frame.width += addedWidth;
        else if (follows.leftMargin)
            frame.x += follows.rightMargin ? addedWidth / 2 : addedWidth;
        if (follows.height)
            frame.height += addedHeight;
        else if (follows.bottomMargin)
            frame.y += addedHeight;
        return frame;
    }

} // namespace

ContainerGtk::ContainerGtk(Rect frame)
    : m_planeWidth(frame.width)
    , m_planeHeight(frame.height)
{
    m_background.add_css_class("sealed");
    m_overlay.set_child(m_background);
    m_overlay.signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& area) { return allocate(child, area); }, false);
    watchKeys();
}

ContainerGtk::~ContainerGtk() = default;

void ContainerGtk::setPlane(double width, double height)
{
    m_planeWidth = width;
    m_planeHeight = height;
}

void ContainerGtk::add(View& view, Rect frame, Autoresizing autoresizing)
{
    auto& child = widgetOf(view);
    // An earlier view that is gone may have had the same address.
    std::erase_if(m_placements, [&](const Placement& old) { return old.widget == &child; });
    m_placements.push_back({ &child, frame, m_planeWidth, m_planeHeight, autoresizing });
    m_shutOut.erase(child.gobj());
    if (m_exclusive && child.gobj() != m_exclusive)
        shutOut(child.gobj());
    m_overlay.add_overlay(child);
}

void ContainerGtk::addBelow(View& sibling, View& view, Rect frame, Autoresizing autoresizing)
{
    add(view, frame, autoresizing);
    widgetOf(view).insert_before(m_overlay, widgetOf(sibling));
}

void ContainerGtk::move(View& view, Rect frame)
{
    const auto placement = std::ranges::find(m_placements, &widgetOf(view), &Placement::widget);
    if (placement == m_placements.end())
        return;
    placement->frame = frame;
    placement->planeWidth = m_planeWidth;
    placement->planeHeight = m_planeHeight;
    m_overlay.queue_allocate();
}

void ContainerGtk::setExclusive(View* view)
{
    letInAgain();
    m_exclusive = view ? widgetOf(*view).gobj() : nullptr;
    if (!m_exclusive)
        return;
    m_exclusiveKeys.clear();
    auto* child = gtk_widget_get_first_child(GTK_WIDGET(m_overlay.gobj()));
    for (; child; child = gtk_widget_get_next_sibling(child)) {
        if (child != m_exclusive)
            shutOut(child);
    }
    auto* root = gtk_widget_get_root(m_exclusive);
    if (root && !gtk_root_get_focus(root))
        gtk_widget_child_focus(m_exclusive, GTK_DIR_TAB_FORWARD);
}

void ContainerGtk::shutOut(GtkWidget* widget)
{
    m_shutOut.try_emplace(
        widget, Reach { !!gtk_widget_get_can_focus(widget), !!gtk_widget_get_can_target(widget) });
    closePopups(widget);
    auto* root = gtk_widget_get_root(widget);
    auto* focus = root ? gtk_root_get_focus(root) : nullptr;
    if (focus && (focus == widget || gtk_widget_is_ancestor(focus, widget)))
        gtk_root_set_focus(root, nullptr);
    gtk_widget_set_can_focus(widget, FALSE);
    gtk_widget_set_can_target(widget, FALSE);
}

void ContainerGtk::letInAgain()
{
    // Some of them may be gone by now.
    auto* child = gtk_widget_get_first_child(GTK_WIDGET(m_overlay.gobj()));
    for (; child; child = gtk_widget_get_next_sibling(child)) {
        const auto reach = m_shutOut.find(child);
        if (reach == m_shutOut.end())
            continue;
        gtk_widget_set_can_focus(child, reach->second.canFocus);
        gtk_widget_set_can_target(child, reach->second.canTarget);
    }
    m_shutOut.clear();
}

void ContainerGtk::watchKeys()
{
    // Not the toolkit's key controller: it swallows no release.
    auto* controller = gtk_event_controller_legacy_new();
    gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_CAPTURE);
    g_signal_connect(controller, "event",
        G_CALLBACK(+[](GtkEventController*, GdkEvent* event, ContainerGtk* self) -> gboolean {
            const auto type = gdk_event_get_event_type(event);
            if (type != GDK_KEY_PRESS && type != GDK_KEY_RELEASE)
                return FALSE;
            return self->handleKey(gdk_key_event_get_keycode(event), type == GDK_KEY_PRESS);
        }),
        this);
    gtk_widget_add_controller(GTK_WIDGET(m_overlay.gobj()), controller);
}

bool ContainerGtk::handleKey(unsigned hardwareKey, bool isPress)
{
    const bool isLeftOver = !m_exclusive && m_exclusiveKeys.contains(hardwareKey);
    if (!isPress)
        m_exclusiveKeys.erase(hardwareKey);
    else if (m_exclusive)
        m_exclusiveKeys.insert(hardwareKey);
    return isLeftOver;
}

bool ContainerGtk::allocate(Gtk::Widget* child, Gdk::Rectangle& area)
{
    const auto placement = std::ranges::find(m_placements, child, &Placement::widget);
    if (placement == m_placements.end())
        return false;
    const auto frame = resized(placement->frame, placement->autoresizing,
        m_overlay.get_width() - placement->planeWidth,
        m_overlay.get_height() - placement->planeHeight);

    const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
    area = Gdk::Rectangle(whole(frame.x), m_overlay.get_height() - whole(frame.y + frame.height),
        std::max(whole(frame.width), 1), std::max(whole(frame.height), 1));
    return true;
}

} // namespace quillox
