#pragma once

#include <webkit/webkit.h>

namespace quillox {

/// Whether a server sends a file to keep, of whatever type, not a page to show.
bool isMeantToBeSaved(WebKitURIResponse*);

/// Answers for the visitor whatever the engine would ask or show beside the page: alerts return,
/// questions are refused, leaving is granted, choosers are cancelled, nothing is printed, permitted
/// or logged in to.
void refuseEverythingElse(WebKitWebView*);

} // namespace quillox
