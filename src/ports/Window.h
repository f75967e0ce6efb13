#pragma once

#include "ports/View.h"
#include "support/Geometry.h"

#include <cstdint>
#include <memory>

namespace quillox {

enum class WindowLevel {
    Normal,
    Shielding, ///< Above panels, notifications and every other window.
};

struct WindowSpec {
    std::uint32_t displayNumber
        = 0; ///< The screen that the frame belongs to, for platforms that place by screen.
    Rect frame; ///< In the common plane of all screens.
    Color background = Color::black();
    WindowLevel level = WindowLevel::Shielding;
    bool isBorderless = true;
    bool isStationary
        = true; ///< Stays where it is when the desktop is switched or an overview is shown.
    bool isFullScreenAuxiliary = true; ///< May stand beside another window's full screen.
    bool isShared = true; ///< False: other programs must not capture its contents, where the
                          ///< platform can prevent it.
    bool canBecomeKey = false; ///< Whether it may have the keyboard.
    bool canBecomeMain = false;

    bool operator==(const WindowSpec&) const = default;
};

/// A top-level window; hidden until it is ordered front, gone when it is destroyed. Nothing that
/// the user or a window manager asks for closes, moves or minimises a window at the shielding
/// level. Main thread only.
class Window {
public:
    virtual ~Window() = default;

    /// Moves the window, also to another screen, and redraws it.
    virtual void setFrame(std::uint32_t displayNumber, Rect frame) = 0;

    /// None takes the present content out. The container must outlive its stay.
    virtual void setContentView(Container* container) = 0;

    virtual void makeKeyAndOrderFront() = 0;

    /// Shows the window without giving it the keyboard, also while another application is active.
    virtual void orderFrontRegardless() = 0;
    virtual void orderOut() = 0;

    /// Gives the keyboard to one view of the content; the view need not have been shown yet.
    virtual void makeFirstResponder(View& view) = 0;
};

class Windows {
public:
    virtual ~Windows() = default;

    virtual std::unique_ptr<Window> makeWindow(const WindowSpec&) = 0;
    virtual std::unique_ptr<Container> makeContainer(Rect frame) = 0;

    /// False where the platform shows every window over all screens at once, so that a second one
    /// would hide the first.
    virtual bool canCoverSeparateScreens() const = 0;
};

} // namespace quillox
