#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// Asks sway, or what speaks its protocol, for its configuration, and finds the bindings in it that
/// fire although shortcuts are inhibited: those marked so, pointer buttons over whole windows,
/// gestures and switches. Nothing when sway or a file that it includes does not answer. Takes a
/// fraction of a second at most.
std::optional<std::vector<std::string>> uninhibitableSwayBindings(const std::string& socketPath);

} // namespace quillox
