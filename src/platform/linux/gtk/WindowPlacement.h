#pragma once

#include "support/Geometry.h"

#include <cstdint>
#include <gtkmm/window.h>
#include <memory>

namespace quillox {

class RunLoop;
class ScreensGdk;

/// What differs between display servers in putting a window over a whole screen, and in raising
/// one.
class WindowPlacement {
public:
    virtual ~WindowPlacement() = default;

    /// Prepares a window that has not been shown yet.
    virtual void prepare(Gtk::Window&) = 0;

    /// Shows the window over exactly that frame, or moves it there, above all others.
    virtual void cover(Gtk::Window&, std::uint32_t displayNumber, const Rect& frame) = 0;

    /// Takes the window off the screen; it no longer asks for the keyboard then.
    virtual void hide(Gtk::Window&) = 0;

    /// Gives the keyboard to a window that is shown, also while another application has it.
    virtual void takeKeyboard(Gtk::Window&) = 0;

    /// Brings an ordinary window to the front, with the keyboard.
    virtual void present(Gtk::Window&) = 0;

    virtual bool canCoverSeparateScreens() const = 0;

    /// Whether an ordinary window gets a whole screen, since nobody arranges windows.
    virtual bool fillsScreen() const = 0;
};

/// For the display server that GTK talks to.
std::unique_ptr<WindowPlacement> makeWindowPlacement(ScreensGdk&, RunLoop&);

} // namespace quillox
