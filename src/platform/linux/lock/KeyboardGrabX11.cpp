#include "platform/linux/lock/KeyboardGrabX11.h"

#include "ports/RunLoop.h"

#include <X11/extensions/XInput2.h>
#include <dlfcn.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// Losses that the server does not tell of are noticed within this time.
    constexpr auto checkInterval = 5s;
    /// Another client does not tell when it lets go.
    constexpr auto retryInterval = 100ms;

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
        s_engaged = this;
    }
    m_isHeld = take(holder());
    m_poll = m_runLoop.every(m_isHeld ? checkInterval : retryInterval, [this] { retake(); });
    return m_isHeld;
}

void KeyboardGrabX11::release()
{
    if (!std::exchange(m_isEngaged, false))
        return;
    m_poll.reset();
    g_signal_handler_disconnect(m_gdkDisplay, m_events);
    s_engaged = nullptr;
    if (std::exchange(m_isHeld, false))
        endKeyboardGrab(m_gdkDisplay);
}

::Window KeyboardGrabX11::holder()
{
    auto* window = m_keyWindow();
    auto* surface = window ? gtk_native_get_surface(GTK_NATIVE(window->gobj())) : nullptr;
    if (surface && isViewable(m_display, gdk_x11_surface_get_xid(surface)))
        return gdk_x11_surface_get_xid(surface);
    if (!m_invisibleWindow)
        m_invisibleWindow.emplace(m_display);
    return m_invisibleWindow->identifier();
}

bool KeyboardGrabX11::take(::Window holder)
{
    m_holder = holder;
    return attemptKeyboardGrab(m_gdkDisplay, holder) == KeyboardGrabAnswer::Given;
}

void KeyboardGrabX11::retake()
{
    // Without a look at the windows first: until the server has answered that, the keyboard would
    // be anybody's.
    const bool isHeld = take(m_holder) || take(holder());
    if (isHeld == m_isHeld)
        return;
    m_isHeld = isHeld;
    m_poll = m_runLoop.every(m_isHeld ? checkInterval : retryInterval, [this] { retake(); });
    if (const auto changed = onChange)
        changed();
}

bool KeyboardGrabX11::handle(const XEvent& event)
{
    // The server takes the keyboard from a window that goes.
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

bool KeyboardGrabX11::keeps(::Display* display, int device)
{
    if (!s_engaged || display != s_engaged->m_display
        || device != masterKeyboard(s_engaged->m_gdkDisplay))
        return false;
    s_engaged->retake();
    return true;
}

} // namespace quillox

/// In place of the library's function of that name, which the toolkit calls as its popups close and
/// its drags end. Between its letting go and a grab of ours a key would be the window manager's;
/// moving the grab to our window instead leaves no time in between.
extern "C" int XIUngrabDevice(Display* display, int device, Time time)
{
    using Function = int (*)(Display*, int, Time);
    static const auto ungrab = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "XIUngrabDevice"));
    return quillox::KeyboardGrabX11::keeps(display, device) ? Success
                                                            : ungrab(display, device, time);
}
