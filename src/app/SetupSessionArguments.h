#pragma once

#include "app/CommandLine.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

inline constexpr std::string_view setupSessionUsage
    = "--user NAME [--session wayland|x11] [--undo] [--yes]";

/// What follows `setup-session`; none when it is not as the usage says.
std::optional<SetupSessionRequest> setupSessionRequest(const std::vector<std::string>& arguments);

/// Complete, with its last line ended.
std::string setupSessionHelpText();

} // namespace quillox
