#include "platform/linux/gtk/ContainerGtk.h"

#include <algorithm>
#include <cmath>

namespace quillox {

ContainerGtk::ContainerGtk(Rect frame)
    : m_planeWidth(frame.width)
    , m_planeHeight(frame.height)
{
    m_background.add_css_class("sealed");
    m_overlay.set_child(m_background);
    m_overlay.signal_get_child_position().connect(
        [this](Gtk::Widget* child, Gdk::Rectangle& area) { return allocate(child, area); }, false);
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
    m_overlay.add_overlay(child);
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

bool ContainerGtk::allocate(Gtk::Widget* child, Gdk::Rectangle& area)
{
    const auto placement = std::ranges::find(m_placements, child, &Placement::widget);
    if (placement == m_placements.end())
        return false;
    auto frame = placement->frame;
    const double addedWidth = m_overlay.get_width() - placement->planeWidth;
    const double addedHeight = m_overlay.get_height() - placement->planeHeight;
    if (placement->autoresizing.width)
        frame.width += addedWidth;
    if (placement->autoresizing.height)
        frame.height += addedHeight;
    else if (placement->autoresizing.bottomMargin)
        frame.y += addedHeight;

    const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
    area = Gdk::Rectangle(whole(frame.x), m_overlay.get_height() - whole(frame.y + frame.height),
        std::max(whole(frame.width), 1), std::max(whole(frame.height), 1));
    return true;
}

} // namespace quillox
