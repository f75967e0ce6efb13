#pragma once

#include <functional>
#include <gtkmm/window.h>
#include <string>

namespace quillox {

/// A window of our own for the setup guide.
class HelpWindow {
public:
    HelpWindow() = default;
    HelpWindow(const HelpWindow&) = delete;
    HelpWindow& operator=(const HelpWindow&) = delete;
    virtual ~HelpWindow() = default;

    /// Loads the guide, at one of its anchors; empty: at its beginning.
    virtual void load(const std::string& anchor) = 0;

    virtual Gtk::Window& window() = 0;

    /// A link was chosen that leads out of the guide.
    std::function<void(const std::string& url)> onLink;

    /// The window has left the screen. It comes out of an event of the window: whoever destroys it
    /// upon that has to wait until the main loop turns again.
    std::function<void()> onClosed;
};

} // namespace quillox
