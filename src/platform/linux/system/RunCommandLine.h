#pragma once

#include "app/CommandLine.h"

namespace quillox {

/// Does what the command line asks for on this process's standard streams and environment. What
/// needs a display, running the program, listing displays and looking at the lock, is the caller's.
/// The exit code.
int runCommandLine(const CommandLine&);

} // namespace quillox
