#pragma once

#include <chrono>
#include <string_view>

namespace quillox {

/// The card between the first-run guide and the operator screen. It has no controls; whoever shows
/// the screens takes it away.
struct FinishingView {
    static constexpr double width = 600; ///< Points, like the guide's card.
    static constexpr double height = 560; ///< Points.
    static constexpr double logoHeight = 64; ///< Points.
    static constexpr double textSize = 22; ///< Points, bold.
    static constexpr std::string_view text = "UNSEALING...";
    /// The bar fills in this time, linearly, from the moment that the card shows.
    static constexpr std::chrono::milliseconds fillDuration { 1600 };
};

} // namespace quillox
