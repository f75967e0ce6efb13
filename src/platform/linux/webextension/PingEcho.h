#pragma once

#include <webkit/webkit-web-process-extension.h>

namespace quillox {

/// Takes the socket that comes with a page's first question for a sign of life, and gives back
/// every byte that comes over it, on the thread that runs the page's scripts.
void echoPings(WebKitWebProcessExtension*);

} // namespace quillox
