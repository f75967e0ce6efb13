#include "platform/linux/lock/StackingGuardX11.h"

#include "platform/linux/lock/ErrorTrapX11.h"
#include "platform/linux/lock/OwnersX11.h"

#include <X11/extensions/XInput2.h>
#include <algorithm>
#include <ranges>
#include <span>
#include <utility>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// Between two checks passes a multiple of what the last one took, within these limits: a
    /// client that raises itself all the time is on top for no longer than the first of them, and
    /// one with thousands of windows cannot keep the main loop busy.
    constexpr auto shortestPause = 10ms;
    constexpr auto longestPause = 40ms;
    constexpr int pausePerCheck = 4;

    /// For what no event tells of.
    constexpr auto safetyInterval = 10s;

    bool isVisible(const XWindowAttributes& window)
    {
        return window.map_state == IsViewable && window.c_class == InputOutput;
    }

    bool overlap(const XWindowAttributes& a, const XWindowAttributes& b)
    {
        const auto reach = [](int start, int length, const XWindowAttributes& window) {
            return start + length + 2 * window.border_width;
        };
        return a.x < reach(b.x, b.width, b) && b.x < reach(a.x, a.width, a)
            && a.y < reach(b.y, b.height, b) && b.y < reach(a.y, a.height, a);
    }

} // namespace

/// The windows of the screen at one moment, from the bottom to the top.
struct StackingGuardX11::Stack {
    struct Guarded {
        ::Window window;
        XWindowAttributes attributes;
    };

    OwnerX11<::Window> memory;
    std::span<const ::Window> windows;
    std::vector<Guarded> guarded; ///< Those that can be seen.

    bool shows(::Window window) const
    {
        return std::ranges::find(guarded, window, &Guarded::window) != guarded.end();
    }
};

StackingGuardX11::StackingGuardX11(RunLoop& runLoop)
    : m_runLoop(runLoop)
    , m_gdkDisplay(gdk_display_get_default())
    , m_display(gdk_x11_display_get_xdisplay(m_gdkDisplay))
    , m_root(DefaultRootWindow(m_display))
{
    int event = 0;
    int error = 0;
    XQueryExtension(m_display, "XInputExtension", &m_inputExtension, &event, &error);
}

StackingGuardX11::~StackingGuardX11()
{
    stop();
}

bool StackingGuardX11::guards(::Window window) const
{
    return std::ranges::find(m_windows, window) != m_windows.end();
}

void StackingGuardX11::add(::Window window)
{
    if (!guards(window))
        m_windows.push_back(window);
    start();
    scheduleCheck();
}

void StackingGuardX11::setKeyWindow(::Window window)
{
    m_keyWindow = window;
    check();
}

void StackingGuardX11::remove(::Window window)
{
    std::erase(m_windows, window);
    if (m_keyWindow == window)
        m_keyWindow = None;
    if (m_windows.empty())
        stop();
}

void StackingGuardX11::start()
{
    if (m_eventHandler != 0)
        return;
    m_eventHandler = g_signal_connect(m_gdkDisplay, "xevent",
        G_CALLBACK(+[](GdkX11Display*, gpointer event, gpointer self) -> gboolean {
            static_cast<StackingGuardX11*>(self)->handleEvent(*static_cast<XEvent*>(event));
            return FALSE;
        }),
        this);
    XWindowAttributes root {};
    XGetWindowAttributes(m_display, m_root, &root);
    m_rootMask = root.your_event_mask;
    m_safetyTimer = m_runLoop.every(safetyInterval, [this] { scheduleCheck(); });
}

void StackingGuardX11::stop()
{
    if (m_eventHandler == 0)
        return;
    m_check.reset();
    m_safetyTimer.reset();
    g_signal_handler_disconnect(m_gdkDisplay, std::exchange(m_eventHandler, 0));
    XSelectInput(m_display, m_root, m_rootMask);
    m_hearsStacking = false;
}

void StackingGuardX11::watchStacking()
{
    XSelectInput(m_display, m_root, m_rootMask | SubstructureNotifyMask);
    m_hearsStacking = true;
}

void StackingGuardX11::handleEvent(const XEvent& event)
{
    switch (event.type) {
    case MapNotify:
    case ConfigureNotify:
    case CirculateNotify:
    case ReparentNotify:
        if (event.xany.window == m_root)
            scheduleCheck();
        return;
    case GenericEvent:
        if (event.xcookie.extension == m_inputExtension
            && (event.xcookie.evtype == XI_FocusIn || event.xcookie.evtype == XI_FocusOut))
            scheduleCheck();
        return;
    }
}

void StackingGuardX11::scheduleCheck()
{
    // One event is enough; a flood of them would keep the toolkit from everything else.
    if (std::exchange(m_hearsStacking, false))
        XSelectInput(m_display, m_root, m_rootMask);
    if (m_check)
        return;
    const auto pause = m_nextCheck - m_runLoop.monotonicNow();
    m_check = m_runLoop.after(std::max(pause, RunLoop::Duration::zero()), [this] { check(); });
}

void StackingGuardX11::check()
{
    const auto begin = m_runLoop.monotonicNow();
    m_check.reset();
    watchStacking(); // First, so that no change after this look at the windows goes unnoticed.
    {
        const ErrorTrapX11 trap(m_gdkDisplay);
        const auto present = stack();
        checkStacking(present);
        checkFocus(present);
    }
    const auto end = m_runLoop.monotonicNow();
    m_nextCheck = end
        + std::clamp<RunLoop::Duration>(pausePerCheck * (end - begin), shortestPause, longestPause);
}

StackingGuardX11::Stack StackingGuardX11::stack() const
{
    Stack result;
    for (const auto window : m_windows) {
        XWindowAttributes attributes {};
        if (XGetWindowAttributes(m_display, window, &attributes) && isVisible(attributes))
            result.guarded.push_back({ window, attributes });
    }
    ::Window root = None;
    ::Window parent = None;
    ::Window* children = nullptr;
    unsigned count = 0;
    if (!result.guarded.empty()
        && XQueryTree(m_display, m_root, &root, &parent, &children, &count)) {
        result.memory.reset(children);
        result.windows = { children, count };
    }
    return result;
}

::Window StackingGuardX11::toplevelOf(::Window window) const
{
    auto* surface = gdk_x11_surface_lookup_for_display(m_gdkDisplay, window);
    while (surface && GDK_IS_POPUP(surface))
        surface = gdk_popup_get_parent(GDK_POPUP(surface));
    return surface ? gdk_x11_surface_get_xid(surface) : None;
}

bool StackingGuardX11::isOpenPopup(::Window window) const
{
    auto* surface = gdk_x11_surface_lookup_for_display(m_gdkDisplay, window);
    return surface && GDK_IS_POPUP(surface) && gdk_surface_get_mapped(surface)
        && guards(toplevelOf(window));
}

void StackingGuardX11::checkStacking(const Stack& stack)
{
    auto below = stack.guarded; // Those that were not met yet on the way down.
    std::vector<::Window> popups;
    bool isDisturbed = false;
    for (const auto window : stack.windows | std::views::reverse) {
        if (std::erase_if(below, [window](const auto& each) { return each.window == window; }))
            continue;
        if (isOpenPopup(window)) {
            isDisturbed |= below.size() < stack.guarded.size();
            popups.push_back(window);
        } else if (!isDisturbed && !below.empty()) {
            XWindowAttributes other {};
            isDisturbed = XGetWindowAttributes(m_display, window, &other) && isVisible(other)
                && std::ranges::any_of(
                    below, [&](const auto& each) { return overlap(each.attributes, other); });
        }
    }
    if (isDisturbed)
        restack(stack, popups);
}

void StackingGuardX11::restack(const Stack& stack, const std::vector<::Window>& popups)
{
    // From the top, so that nothing of ours is buried by ours even for a moment.
    ::Window upper = None;
    const auto placeBelow = [&](::Window window) {
        XWindowChanges changes {};
        changes.sibling = upper;
        changes.stack_mode = upper == None ? Above : Below;
        XConfigureWindow(m_display, window,
            static_cast<unsigned>(upper == None ? CWStackMode : CWStackMode | CWSibling), &changes);
        upper = window;
    };
    std::ranges::for_each(popups, placeBelow);
    if (stack.shows(m_keyWindow))
        placeBelow(m_keyWindow);
    for (const auto& each : stack.guarded) {
        if (each.window != m_keyWindow)
            placeBelow(each.window);
    }
}

void StackingGuardX11::checkFocus(const Stack& stack)
{
    if (!stack.shows(m_keyWindow))
        return;
    ::Window focused = None;
    int revertTo = 0;
    XGetInputFocus(m_display, &focused, &revertTo);
    if (toplevelOf(focused) != m_keyWindow)
        XSetInputFocus(m_display, m_keyWindow, RevertToParent, CurrentTime);
}

} // namespace quillox
