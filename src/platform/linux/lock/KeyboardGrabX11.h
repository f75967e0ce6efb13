#pragma once

#include "platform/linux/lock/KeyboardLayer.h"
#include "support/Handle.h"

#include <gdk/x11/gdkx.h>
#include <gtkmm/window.h>

namespace quillox {

class RunLoop;

/// The X server's grab of the master keyboard: while it is held no other client, a window manager
/// included, gets any key. The toolkit's own popups take it over while they are open, and drop it
/// as they close; it is taken again at once then.
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

private:
    ::Window grabWindow();
    bool take();
    void retake();
    bool handle(const XEvent&);

    std::function<Gtk::Window*()> m_keyWindow;
    RunLoop& m_runLoop;
    GdkDisplay* m_gdkDisplay;
    ::Display* m_display;
    ::Window m_ownWindow
        = 0; ///< Shows nothing; holds the keyboard when no window of ours is there.
    gulong m_events = 0;
    Handle m_poll;
    bool m_isEngaged = false;
    bool m_isHeld = false;
};

} // namespace quillox
