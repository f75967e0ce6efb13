#include "platform/linux/lock/KeyboardGrabX11.h"

#include "ports/RunLoop.h"

#include <X11/extensions/XInput2.h>
#include <array>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// Losses that the server does not tell of are noticed within this time.
    constexpr auto checkInterval = 5s;
    /// Another client does not tell when it lets go.
    constexpr auto retryInterval = 100ms;

    int masterKeyboard(GdkDisplay* display)
    {
        return gdk_x11_device_get_id(gdk_seat_get_keyboard(gdk_display_get_default_seat(display)));
    }

    bool isViewable(::Display* display, ::Window window)
    {
        XWindowAttributes attributes {};
        return XGetWindowAttributes(display, window, &attributes) != 0
            && attributes.map_state == IsViewable;
    }

} // namespace

KeyboardGrabX11::KeyboardGrabX11(std::function<Gtk::Window*()> keyWindow, RunLoop& runLoop)
    : m_keyWindow(std::move(keyWindow))
    , m_runLoop(runLoop)
    , m_gdkDisplay(gdk_display_get_default())
    , m_display(gdk_x11_display_get_xdisplay(m_gdkDisplay))
{
}

KeyboardGrabX11::~KeyboardGrabX11()
{
    release();
    if (m_ownWindow)
        XDestroyWindow(m_display, m_ownWindow);
}

bool KeyboardGrabX11::engage()
{
    if (!m_isEngaged) {
        m_isEngaged = true;
        m_events = g_signal_connect(m_gdkDisplay, "xevent",
            G_CALLBACK(+[](GdkX11Display*, const XEvent* event, gpointer self) -> gboolean {
                return static_cast<KeyboardGrabX11*>(self)->handle(*event);
            }),
            this);
    }
    m_isHeld = take();
    m_poll = m_runLoop.every(m_isHeld ? checkInterval : retryInterval, [this] { retake(); });
    return m_isHeld;
}

void KeyboardGrabX11::release()
{
    if (!std::exchange(m_isEngaged, false))
        return;
    m_poll.reset();
    g_signal_handler_disconnect(m_gdkDisplay, m_events);
    if (std::exchange(m_isHeld, false)) {
        XIUngrabDevice(m_display, masterKeyboard(m_gdkDisplay), CurrentTime);
        XFlush(m_display);
    }
}

::Window KeyboardGrabX11::grabWindow()
{
    auto* window = m_keyWindow();
    auto* surface = window ? gtk_native_get_surface(GTK_NATIVE(window->gobj())) : nullptr;
    if (surface && isViewable(m_display, gdk_x11_surface_get_xid(surface)))
        return gdk_x11_surface_get_xid(surface);
    if (!m_ownWindow) {
        XSetWindowAttributes attributes {};
        attributes.override_redirect = True;
        m_ownWindow = XCreateWindow(m_display, DefaultRootWindow(m_display), -1, -1, 1, 1, 0, 0,
            InputOnly, CopyFromParent, CWOverrideRedirect, &attributes);
        XMapWindow(m_display, m_ownWindow);
    }
    return m_ownWindow;
}

bool KeyboardGrabX11::take()
{
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits {};
    for (const int type : { XI_KeyPress, XI_KeyRelease, XI_FocusIn, XI_FocusOut })
        XISetMask(bits.data(), type);
    XIEventMask mask { masterKeyboard(m_gdkDisplay), static_cast<int>(bits.size()), bits.data() };
    gdk_x11_display_error_trap_push(m_gdkDisplay);
    const int status = XIGrabDevice(m_display, mask.deviceid, grabWindow(), CurrentTime, None,
        GrabModeAsync, GrabModeAsync, XIOwnerEvents, &mask);
    return gdk_x11_display_error_trap_pop(m_gdkDisplay) == 0 && status == GrabSuccess;
}

void KeyboardGrabX11::retake()
{
    const bool isHeld = take();
    if (isHeld == m_isHeld)
        return;
    m_isHeld = isHeld;
    m_poll = m_runLoop.every(m_isHeld ? checkInterval : retryInterval, [this] { retake(); });
    if (const auto changed = onChange)
        changed();
}

bool KeyboardGrabX11::handle(const XEvent& event)
{
    // A popup of ours took the keyboard over, or got it back from here; either way it has let go
    // when it closes.
    if (event.type == UnmapNotify && event.xunmap.event == event.xunmap.window)
        retake();
    const auto& cookie = event.xcookie;
    const bool isFocus = event.type == GenericEvent && cookie.data
        && (cookie.evtype == XI_FocusIn || cookie.evtype == XI_FocusOut);
    // Sent when a grab ends that was not given up for another one.
    if (isFocus && static_cast<XIFocusInEvent*>(cookie.data)->mode == XINotifyUngrab)
        retake();
    return false;
}

} // namespace quillox
