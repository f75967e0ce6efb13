#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace quillox {

/// The enumerations of the settings record. They are stored by case name; `all…` lists the cases in
/// the order in which pickers offer them.
enum class SourceKind { remote, local };

enum class NavPosition { topLeft, topCenter, topRight, bottomLeft, bottomCenter, bottomRight };

/// `pageBackground` takes the colour from the page that is shown.
enum class NotchBarColor { black, pageBackground };

inline constexpr std::array allSourceKinds { SourceKind::remote, SourceKind::local };
inline constexpr std::array allNavPositions { NavPosition::topLeft, NavPosition::topCenter,
    NavPosition::topRight, NavPosition::bottomLeft, NavPosition::bottomCenter,
    NavPosition::bottomRight };
inline constexpr std::array allNotchBarColors { NotchBarColor::black,
    NotchBarColor::pageBackground };

std::string_view rawValue(SourceKind);
std::string_view rawValue(NavPosition);
std::string_view rawValue(NotchBarColor);

/// None when `text` names no case; the comparison is exact.
std::optional<SourceKind> sourceKindFromRawValue(std::string_view text);
std::optional<NavPosition> navPositionFromRawValue(std::string_view text);
std::optional<NotchBarColor> notchBarColorFromRawValue(std::string_view text);

/// The centre positions are neither left nor right.
bool isLeft(NavPosition);
bool isRight(NavPosition);
bool isTop(NavPosition);

} // namespace quillox
