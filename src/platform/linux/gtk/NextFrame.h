#pragma once

#include <functional>
#include <gtkmm/window.h>

namespace quillox {

/// Calls once, from the main loop when that has nothing else to do, after the next frame of the
/// window was painted: what would only hold that frame up. The window must be visible.
void afterNextFrame(Gtk::Window&, std::function<void()>);

} // namespace quillox
