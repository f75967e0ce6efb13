#include "config/SettingsEnumerations.h"

namespace quillox {

namespace {

    template <typename Cases>
    std::optional<typename Cases::value_type> caseNamed(const Cases& cases, std::string_view text)
    {
        for (const auto candidate : cases) {
            if (rawValue(candidate) == text)
                return candidate;
        }
        return std::nullopt;
    }

} // namespace

std::string_view rawValue(SourceKind kind)
{
    switch (kind) {
    case SourceKind::remote:
        return "remote";
    case SourceKind::local:
        return "local";
    }
    return {};
}

std::string_view rawValue(NavPosition position)
{
    switch (position) {
    case NavPosition::topLeft:
        return "topLeft";
    case NavPosition::topCenter:
        return "topCenter";
    case NavPosition::topRight:
        return "topRight";
    case NavPosition::bottomLeft:
        return "bottomLeft";
    case NavPosition::bottomCenter:
        return "bottomCenter";
    case NavPosition::bottomRight:
        return "bottomRight";
    }
    return {};
}

std::string_view rawValue(NotchBarColor color)
{
    switch (color) {
    case NotchBarColor::black:
        return "black";
    case NotchBarColor::pageBackground:
        return "pageBackground";
    }
    return {};
}

std::optional<SourceKind> sourceKindFromRawValue(std::string_view text)
{
    return caseNamed(allSourceKinds, text);
}

std::optional<NavPosition> navPositionFromRawValue(std::string_view text)
{
    return caseNamed(allNavPositions, text);
}

std::optional<NotchBarColor> notchBarColorFromRawValue(std::string_view text)
{
    return caseNamed(allNotchBarColors, text);
}

bool isLeft(NavPosition position)
{
    return position == NavPosition::topLeft || position == NavPosition::bottomLeft;
}

bool isRight(NavPosition position)
{
    return position == NavPosition::topRight || position == NavPosition::bottomRight;
}

bool isTop(NavPosition position)
{
    return position == NavPosition::topLeft || position == NavPosition::topCenter
        || position == NavPosition::topRight;
}

} // namespace quillox
