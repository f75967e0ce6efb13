#include "kiosk/KioskNavBar.h"

#include <algorithm>

namespace quillox {

namespace {

    /// Points between the bar and the edges of its container.
    constexpr double margin = 28;

    double leftEdge(double available, double width, NavPosition position)
    {
        if (isLeft(position))
            return margin;
        if (isRight(position))
            return available - margin - width;
        return (available - width) / 2;
    }

} // namespace

KioskNavBar::KioskNavBar(bool showBack, bool showForward, bool showRefresh, bool showHome)
{
    if (showBack)
        m_stack.push_back(&m_backButton);
    if (showForward)
        m_stack.push_back(&m_forwardButton);
    if (showRefresh)
        m_stack.push_back(&m_refreshButton);
    if (showHome)
        m_stack.push_back(&m_homeButton);
}

Rect KioskNavBar::size() const
{
    const auto count = static_cast<double>(m_stack.size());
    return { 0, 0, 2 * horizontalInset + count * buttonSize + std::max(count - 1, 0.0) * spacing,
        2 * verticalInset + buttonSize };
}

Rect KioskNavBar::frame(
    const Rect& container, NavPosition position, double topInset, double notchTop) const
{
    auto bar = size();
    bar.x = leftEdge(container.width, bar.width, position);
    bar.y = margin;
    if (isTop(position)) {
        const double base = position == NavPosition::topCenter ? notchTop : 0;
        bar.y = container.height - margin - std::max(topInset, base) - bar.height;
    }
    return bar;
}

Autoresizing KioskNavBar::autoresizing(NavPosition position)
{
    return { .bottomMargin = isTop(position),
        .leftMargin = !isLeft(position),
        .rightMargin = !isRight(position) };
}

} // namespace quillox
