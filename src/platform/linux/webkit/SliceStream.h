#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "ports/SchemeHandler.h"

#include <gio/gio.h>

namespace quillox {

/// The body of a response as a stream for the engine. Whoever reads it asynchronously has the disk
/// waited for on a worker thread.
GObjectOwner<GInputStream> makeSliceStream(const SchemeResponse&);

} // namespace quillox
