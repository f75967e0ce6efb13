#pragma once

#include "ports/Screens.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// One screen as the operator picks it.
struct DisplayInfo {
    std::uint32_t id = 0; ///< The display number; 0 when the platform cannot tell.
    std::string label; ///< For example "Studio — 1512×982"; the size is in points.

    auto operator<=>(const DisplayInfo&) const = default;
};

namespace Displays {

    /// In the platform's order; empty while no output is connected.
    std::vector<DisplayInfo> list(const Screens&);

    /// The first screen with that display number; none for 0 and for a display that is not
    /// connected.
    std::optional<Screen> screen(const Screens&, std::uint32_t displayID);

} // namespace Displays

} // namespace quillox
