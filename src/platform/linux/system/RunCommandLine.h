#pragma once

#include "app/CommandLine.h"

namespace quillox {

/// Does what the command line asks for on this process's standard streams and environment. What
/// needs a display, running the program and listing displays, is the caller's. The exit code.
int runCommandLine(const CommandLine&);

} // namespace quillox
