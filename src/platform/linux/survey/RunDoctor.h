#pragma once

#include "app/CommandLine.h"

namespace quillox {

/// `quillox doctor` on this process's standard streams. Opens the display itself, also copes with
/// none; call it after `prepareEnvironment` and before the toolkit starts. The exit code.
int runDoctor(const CommandLine&);

} // namespace quillox
