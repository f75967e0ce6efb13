#pragma once

#include "platform/linux/update/UpdateParts.h"

namespace quillox {

/// For the module, and for programs that bring the libraries with them.
extern const UpdateParts linkedUpdateParts;

} // namespace quillox
