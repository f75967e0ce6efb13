#pragma once

#include "ports/LoadError.h"

#include <glib.h>

namespace quillox {

/// What the engine's error is in the terms of the core. One that is not known counts as a loading
/// error of unknown cause.
LoadError translateLoadError(const GError&);

} // namespace quillox
