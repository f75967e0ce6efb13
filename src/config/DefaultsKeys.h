#pragma once

#include <string_view>

namespace quillox {

/// The keys of the user's defaults.
inline constexpr std::string_view kioskSettingsKey = "kioskSettings";
inline constexpr std::string_view hasOnboardedKey = "hasOnboarded";

} // namespace quillox
