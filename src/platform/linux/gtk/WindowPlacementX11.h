#pragma once

#include "platform/linux/gtk/WindowPlacement.h"
#include "platform/linux/lock/StackingGuardX11.h"
#include "support/Handle.h"

#include <gdk/x11/gdkx.h>

namespace quillox {

/// Override-redirect windows: the one way that puts a window on the right screen with every window
/// manager and with none, and that a desktop switch leaves alone. While they are shown, nothing
/// else comes on top or has the keyboard for long.
class WindowPlacementX11 final : public WindowPlacement {
public:
    WindowPlacementX11(ScreensGdk&, RunLoop&);

    void prepare(Gtk::Window&) override;
    void cover(Gtk::Window&, std::uint32_t displayNumber, const Rect& frame) override;
    void hide(Gtk::Window&) override;
    void takeKeyboard(Gtk::Window&) override;
    void present(Gtk::Window&) override;
    bool canCoverSeparateScreens() const override { return true; }
    bool fillsScreen() const override { return !hasWindowManager(); }

    /// Whether any client manages the windows of the screen.
    bool hasWindowManager() const;

private:
    bool setFocus(::Window);
    void keepTryingFor(::Window, int attempts);

    ScreensGdk& m_screens;
    RunLoop& m_runLoop;
    GdkDisplay* m_gdkDisplay;
    ::Display* m_display;
    StackingGuardX11 m_guard;
    Handle m_retry;
};

} // namespace quillox
