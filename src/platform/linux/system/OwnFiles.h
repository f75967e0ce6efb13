#pragma once

#include <optional>
#include <string>

namespace quillox {

/// The absolute path of a file that comes with the program. `built` is where it lies from a program
/// that was built here or unpacked with all that belongs to it, `installed` from one that a package
/// installed; both are seen from the program's folder. None when neither is a regular file.
std::optional<std::string> findOwnFile(const char* built, const char* installed);

} // namespace quillox
