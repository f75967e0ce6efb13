#pragma once

#include <array>
#include <string_view>

namespace quillox {

/// What stands over a control: a short heading in upper case and one line of help.
struct Caption {
    std::string_view heading;
    std::string_view help;
};

/// One key of the seal gesture as it is drawn, and as it is read out.
struct KeyCap {
    std::string_view symbol;
    std::string_view name;
};

inline constexpr std::array sealKeyCaps {
    KeyCap { "⌘", "Super" },
    KeyCap { "⇧", "Shift" },
    KeyCap { "S", "S" },
};

/// A full-width bar with a text in it, which fills from its leading edge.
struct SealBar {
    std::string_view text;
    double fill = 0; ///< 0 to 1.

    bool operator==(const SealBar&) const = default;
};

} // namespace quillox
