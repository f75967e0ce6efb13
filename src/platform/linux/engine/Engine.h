#pragma once

#include "platform/linux/gtk/HelpWindow.h"
#include "ports/WebView.h"

#include <memory>

namespace quillox {

class RunLoop;
class SystemLog;

/// The web engine, all of which is behind this: it comes in a module of its own, which the program
/// loads once it has something to show. Main thread only.
class Engine : public WebViews {
public:
    /// Starts what every page needs, so that the first one comes sooner.
    virtual void prepare() = 0;

    /// `parent` may be null.
    virtual std::unique_ptr<HelpWindow> makeHelpWindow(Gtk::Window* parent) = 0;
};

/// The door of the module. A page's process that takes more than `pageMemoryLimit` MiB is asked to
/// release memory and at last ended; 0 is no limit. Run loop and log outlive the engine, which the
/// caller owns.
using MakeEngine = Engine*(RunLoop&, SystemLog&, unsigned pageMemoryLimit);
inline constexpr auto makeEngineName = "quilloxMakeEngine";

} // namespace quillox
