#pragma once

#include <webkit/webkit.h>

namespace quillox {

/// Closes the ways into the engine that go past the page: the middle button, which pastes what
/// somebody else has selected, gestures of a touchpad, and what other programs drop. Drags of the
/// page's own stay within it as they are, and so does the keyboard. For as long as the view lives;
/// call it once.
void closeInputWays(WebKitWebView*);

} // namespace quillox
