#pragma once

#include <string>

namespace quillox {

/// Makes this process's environment fit for a display that visitors touch: what would open the
/// toolkit's or the engine's own tools is taken out of it, the engine may play from the private
/// scheme, and drawing by OpenGL is switched off where no graphics card does it, unless QUILLOX_GL
/// says "on" or "off". Call it first of all, before the toolkit starts and before there is a second
/// thread.
/// Returns the line for the system log that says what was decided.
std::string prepareEnvironment();

/// The memory in MiB that a page may take: what QUILLOX_PAGE_MEMORY says, otherwise what suits this
/// machine.
unsigned pageMemoryLimit();

} // namespace quillox
