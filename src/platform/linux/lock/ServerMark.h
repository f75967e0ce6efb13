#pragma once

#include <gdk/gdk.h>
#include <string>

namespace quillox {

/// A mark of this run of the X server, made when it has none yet: a property of the root window,
/// which goes with the server and stays when its clients go. Empty for other kinds of display. Main
/// thread only.
std::string serverMark(GdkDisplay*);

} // namespace quillox
