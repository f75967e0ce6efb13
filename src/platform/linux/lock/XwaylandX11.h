#pragma once

#include <gdk/gdk.h>

namespace quillox {

/// Whether `display` is an X server that is itself a client of a Wayland compositor, which sees
/// every key first. False for other kinds of displays, and for none. May wait for the server's
/// answer. Main thread only.
bool isXwayland(GdkDisplay* display);

} // namespace quillox
