#pragma once

#include "platform/linux/lock/KeyboardGrabAttempt.h"
#include "platform/linux/lock/KeyboardLayer.h"
#include "support/Handle.h"

#include <gtkmm/window.h>
#include <optional>

namespace quillox {

class RunLoop;

/// The X server's grab of the master keyboard: while it is held no other client, a window manager
/// included, gets any key. The toolkit's own popups and drags take it over while they last; when
/// they let go it comes back here.
///
/// It is an XInput2 grab on the toolkit's own connection, since a core grab, or one of another
/// connection, would keep those popups from opening. The server frees it when the process dies.
class KeyboardGrabX11 final : public KeyboardLayer {
public:
    /// `keyWindow` is the visible window that has the keyboard, or null.
    KeyboardGrabX11(std::function<Gtk::Window*()> keyWindow, RunLoop&);
    ~KeyboardGrabX11() override;

    std::string_view name() const override { return "X11 keyboard grab"; }
    bool engage() override;
    void release() override;
    bool isHeld() const override { return m_isHeld; }
    bool isIndependentOfFocus() const override { return true; }

    /// Somebody in this process is about to let go of a device. Whether it was the keyboard and one
    /// of these, engaged, took it back instead.
    static bool keeps(::Display*, int device);

private:
    ::Window holder();
    bool take(::Window);
    void retake();
    bool handle(const XEvent&);

    inline static KeyboardGrabX11* s_engaged = nullptr;

    std::function<Gtk::Window*()> m_keyWindow;
    RunLoop& m_runLoop;
    GdkDisplay* m_gdkDisplay;
    ::Display* m_display;
    /// Holds the keyboard when no window of ours is there.
    std::optional<InvisibleWindowX11> m_invisibleWindow;
    ::Window m_holder = 0; ///< What the keyboard was last given to.
    gulong m_events = 0;
    Handle m_poll;
    bool m_isEngaged = false;
    bool m_isHeld = false;
};

} // namespace quillox
