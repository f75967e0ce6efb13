#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "ports/SchemeHandler.h"

#include <gio/gio.h>
#include <webkit/webkit.h>

namespace quillox {

/// The body of a response as a stream for the engine, which sends on whatever it has read at once
/// and queues what the page's process does not take in time. Read asynchronously, the stream
/// therefore goes on only when the page is near, so that a file of any size takes little memory
/// here, and has the disk waited for on a worker thread. Without a view it does not wait for a
/// page. Main thread only.
GObjectOwner<GInputStream> makeSliceStream(const SchemeResponse&, WebKitWebView*);

} // namespace quillox
