#pragma once

#include <webkit/webkit.h>

namespace quillox {

/// Takes from pages what the engine would show beside them or hand to the machine, as far as the
/// engine has switches for it. What has none is refused when it is asked for.
void restrictSettings(WebKitSettings*);

} // namespace quillox
