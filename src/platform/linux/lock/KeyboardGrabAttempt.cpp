#include "platform/linux/lock/KeyboardGrabAttempt.h"

#include <array>

// Last, since Xlib claims common words.
#include <X11/extensions/XInput2.h>

namespace quillox {

InvisibleWindowX11::InvisibleWindowX11(::Display* display)
    : m_display(display)
{
    XSetWindowAttributes attributes {};
    attributes.override_redirect = True;
    m_window = XCreateWindow(display, DefaultRootWindow(display), -1, -1, 1, 1, 0, 0, InputOnly,
        CopyFromParent, CWOverrideRedirect, &attributes);
    XMapWindow(display, m_window);
}

InvisibleWindowX11::~InvisibleWindowX11()
{
    XDestroyWindow(m_display, m_window);
}

std::optional<int> masterKeyboard(GdkDisplay* display)
{
    auto* seat = gdk_display_get_default_seat(display);
    auto* keyboard = seat ? gdk_seat_get_keyboard(seat) : nullptr;
    return keyboard ? std::optional(gdk_x11_device_get_id(keyboard)) : std::nullopt;
}

KeyboardGrabAnswer attemptKeyboardGrab(GdkDisplay* display, ::Window window)
{
    const auto keyboard = masterKeyboard(display);
    if (!keyboard)
        return KeyboardGrabAnswer::Refused;
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits {};
    for (const int type : { XI_KeyPress, XI_KeyRelease, XI_FocusIn, XI_FocusOut })
        XISetMask(bits.data(), type);
    XIEventMask mask { *keyboard, static_cast<int>(bits.size()), bits.data() };
    gdk_x11_display_error_trap_push(display);
    const int status = XIGrabDevice(gdk_x11_display_get_xdisplay(display), *keyboard, window,
        CurrentTime, None, GrabModeAsync, GrabModeAsync, XIOwnerEvents, &mask);
    const bool hasFailed = gdk_x11_display_error_trap_pop(display) != 0;
    if (status == AlreadyGrabbed || status == GrabFrozen)
        return KeyboardGrabAnswer::HeldByAnother;
    return status == GrabSuccess && !hasFailed ? KeyboardGrabAnswer::Given
                                               : KeyboardGrabAnswer::Refused;
}

void endKeyboardGrab(GdkDisplay* display)
{
    auto* server = gdk_x11_display_get_xdisplay(display);
    if (const auto keyboard = masterKeyboard(display))
        XIUngrabDevice(server, *keyboard, CurrentTime);
    XFlush(server);
}

} // namespace quillox
