#include "platform/linux/gtk/WindowPlacementX11.h"

#include "platform/linux/gtk/ScreensGdk.h"
#include "ports/RunLoop.h"

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// A window cannot have the keyboard before the server has mapped it; how often, and how far
    /// apart, to try again.
    constexpr int focusAttempts = 20;
    constexpr auto focusPause = 50ms;

    ::Window xidOf(Gtk::Window& window)
    {
        return gdk_x11_surface_get_xid(gtk_native_get_surface(GTK_NATIVE(window.gobj())));
    }

} // namespace

WindowPlacementX11::WindowPlacementX11(ScreensGdk& screens, RunLoop& runLoop)
    : m_screens(screens)
    , m_runLoop(runLoop)
    , m_gdkDisplay(gdk_display_get_default())
    , m_display(gdk_x11_display_get_xdisplay(m_gdkDisplay))
    , m_guard(runLoop)
{
}

void WindowPlacementX11::prepare(Gtk::Window& window)
{
    gtk_widget_realize(GTK_WIDGET(window.gobj()));
    XSetWindowAttributes attributes {};
    attributes.override_redirect = True;
    XChangeWindowAttributes(m_display, xidOf(window), CWOverrideRedirect, &attributes);
}

void WindowPlacementX11::cover(Gtk::Window& window, std::uint32_t, const Rect& frame)
{
    auto area = m_screens.toGdk(frame);
    const int scale = window.get_scale_factor();
    const auto place = [&] {
        XMoveResizeWindow(m_display, xidOf(window), area.x * scale, area.y * scale,
            static_cast<unsigned>(area.width * scale), static_cast<unsigned>(area.height * scale));
    };
    window.set_default_size(area.width, area.height);
    place();
    window.set_visible(true);
    place(); // Mapping may have resized it.
    XRaiseWindow(m_display, xidOf(window));
    XSync(m_display, False);
    m_guard.add(xidOf(window));
}

void WindowPlacementX11::takeKeyboard(Gtk::Window& window)
{
    m_retry.reset();
    if (m_guard.guards(xidOf(window)))
        m_guard.setKeyWindow(xidOf(window));
    else
        keepTryingFor(xidOf(window), focusAttempts);
}

void WindowPlacementX11::hide(Gtk::Window& window)
{
    m_guard.remove(xidOf(window));
    window.set_visible(false);
}

bool WindowPlacementX11::setFocus(::Window window)
{
    ::Window focused = None;
    int revertTo = 0;
    gdk_x11_display_error_trap_push(m_gdkDisplay);
    XSetInputFocus(m_display, window, RevertToParent, CurrentTime);
    XGetInputFocus(m_display, &focused, &revertTo);
    return gdk_x11_display_error_trap_pop(m_gdkDisplay) == 0 && focused == window;
}

void WindowPlacementX11::keepTryingFor(::Window window, int attempts)
{
    m_retry.reset();
    if (setFocus(window) || attempts == 0)
        return;
    m_retry = m_runLoop.after(
        focusPause, [this, window, attempts] { keepTryingFor(window, attempts - 1); });
}

void WindowPlacementX11::present(Gtk::Window& window)
{
    m_retry.reset();
    window.set_visible(true);
    auto* surface = gtk_native_get_surface(GTK_NATIVE(window.gobj()));
    gtk_window_present_with_time(window.gobj(), gdk_x11_get_server_time(surface));
    if (!fillsScreen())
        return;
    // Nobody else gives it a place then.
    if (const auto main = m_screens.mainScreen()) {
        const auto area = m_screens.toGdk(main->frame);
        const int scale = gdk_surface_get_scale_factor(surface);
        XMoveResizeWindow(m_display, xidOf(window), area.x * scale, area.y * scale,
            static_cast<unsigned>(area.width * scale), static_cast<unsigned>(area.height * scale));
    }
    XRaiseWindow(m_display, xidOf(window));
    takeKeyboard(window);
}

bool WindowPlacementX11::hasWindowManager() const
{
    XWindowAttributes root {};
    XGetWindowAttributes(m_display, DefaultRootWindow(m_display), &root);
    return (root.all_event_masks & SubstructureRedirectMask) != 0;
}

} // namespace quillox
