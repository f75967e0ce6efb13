#include "config/HostSyntax.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quillox {

namespace {

    struct Range {
        char32_t first;
        char32_t last;
    };

    constexpr std::array invisibleRanges { Range { 0x00, 0x20 }, Range { 0x7f, 0xa0 },
        Range { 0xad, 0xad }, Range { 0x34f, 0x34f }, Range { 0x61c, 0x61c },
        Range { 0x115f, 0x1160 }, Range { 0x1680, 0x1680 }, Range { 0x180b, 0x180f },
        Range { 0x2000, 0x200f }, Range { 0x2028, 0x202f }, Range { 0x205f, 0x206f },
        Range { 0x3000, 0x3000 }, Range { 0x3164, 0x3164 }, Range { 0xfe00, 0xfe0f },
        Range { 0xfeff, 0xfeff }, Range { 0xfff0, 0xffff }, Range { 0xe0000, 0xe0fff } };

    /// Symbols, and forms that stand for other characters: a wide full stop, a slash in a ligature.
    constexpr std::array notInHostNames { Range { 0xa1, 0xa9 }, Range { 0xab, 0xb6 },
        Range { 0xb8, 0xb9 }, Range { 0xbb, 0xbf }, Range { 0x2000, 0x2bff },
        Range { 0x2ff0, 0x3004 }, Range { 0x3008, 0x3020 }, Range { 0x3200, 0x33ff },
        Range { 0xd800, 0xf8ff }, Range { 0xfb00, 0xfb06 }, Range { 0xfe10, 0xfe6f },
        Range { 0xff00, 0xffff }, Range { 0x1d000, 0x1fbff }, Range { 0xe0000, 0x10ffff } };

    template <typename Ranges> bool isWithin(const Ranges& ranges, char32_t point)
    {
        return std::any_of(ranges.begin(), ranges.end(),
            [point](Range range) { return range.first <= point && point <= range.last; });
    }

    /// Takes the first character off `text`; none when it is not UTF-8.
    std::optional<char32_t> takeCodePoint(std::string_view& text)
    {
        const auto lead = static_cast<unsigned char>(text.front());
        const std::size_t length = lead < 0x80 ? 1
            : (lead & 0xe0) == 0xc0            ? 2
            : (lead & 0xf0) == 0xe0            ? 3
            : (lead & 0xf8) == 0xf0            ? 4
                                               : 0;
        if (length == 0 || text.size() < length)
            return std::nullopt;
        char32_t point = length == 1 ? lead : lead & (0x7f >> length);
        for (std::size_t i = 1; i < length; ++i) {
            const auto next = static_cast<unsigned char>(text[i]);
            if ((next & 0xc0) != 0x80)
                return std::nullopt;
            point = (point << 6) | (next & 0x3f);
        }
        constexpr std::array<char32_t, 5> smallest { 0, 0, 0x80, 0x800, 0x10000 };
        if (point < smallest[length] || point > 0x10ffff || (point >= 0xd800 && point <= 0xdfff))
            return std::nullopt;
        text.remove_prefix(length);
        return point;
    }

    bool isDigit(char c)
    {
        return c >= '0' && c <= '9';
    }
    bool isLetter(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    }
    bool isHexDigit(char c)
    {
        return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    }

    bool isIPv4Address(std::string_view text)
    {
        for (int part = 1; part <= 4; ++part) {
            const auto end = part < 4 ? text.find('.') : text.size();
            if (end == std::string_view::npos)
                return false;
            const auto digits = text.substr(0, end);
            if (digits.empty() || digits.size() > 3
                || !std::all_of(digits.begin(), digits.end(), isDigit)
                || (digits.size() > 1 && digits[0] == '0')
                || (digits.size() == 3 && digits > "255"))
                return false;
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return true;
    }

    /// Whether some parsers take the name for the number of an IPv4 address.
    bool endsInNumber(std::string_view name)
    {
        if (name.ends_with('.'))
            name.remove_suffix(1);
        auto label = name.substr(name.rfind('.') + 1);
        if (label.starts_with("0x") || label.starts_with("0X"))
            return std::all_of(label.begin() + 2, label.end(), isHexDigit);
        return !label.empty() && std::all_of(label.begin(), label.end(), isDigit);
    }

    /// The number of 16-bit groups in a run without "::"; none when one is malformed.
    std::optional<int> groupCount(std::string_view run, bool mayEndInIPv4)
    {
        int count = 0;
        while (!run.empty()) {
            const auto end = run.find(':');
            const auto group = run.substr(0, end);
            const auto isLast = end == std::string_view::npos;
            if (isLast && mayEndInIPv4 && isIPv4Address(group))
                return count + 2;
            if (group.empty() || group.size() > 4
                || !std::all_of(group.begin(), group.end(), isHexDigit))
                return std::nullopt;
            ++count;
            if (isLast)
                break;
            run.remove_prefix(end + 1);
            if (run.empty())
                return std::nullopt;
        }
        return count;
    }

} // namespace

bool isVisibleText(std::string_view text)
{
    while (!text.empty()) {
        if (text.front() > ' ' && text.front() < 0x7f) {
            text.remove_prefix(1);
            continue;
        }
        const auto point = takeCodePoint(text);
        if (!point || isWithin(invisibleRanges, *point))
            return false;
    }
    return true;
}

bool isHostName(std::string_view text)
{
    constexpr std::string_view punctuation = "-._~!$&'()*+,;=";
    if (text.empty() || !isVisibleText(text) || (endsInNumber(text) && !isIPv4Address(text)))
        return false;
    while (!text.empty()) {
        if (const char c = text.front();
            isDigit(c) || isLetter(c) || punctuation.find(c) != punctuation.npos) {
            text.remove_prefix(1);
            continue;
        }
        const auto point = takeCodePoint(text);
        if (!point || *point < 0x80 || isWithin(notInHostNames, *point))
            return false;
    }
    return true;
}

bool isLoopbackHost(std::string_view text)
{
    return text == "localhost" || text.ends_with(".localhost") || text == "::1"
        || (text.starts_with("127.") && isIPv4Address(text));
}

bool isIPv6Address(std::string_view text)
{
    const auto gap = text.find("::");
    if (gap == std::string_view::npos)
        return groupCount(text, true) == 8;
    const auto before = groupCount(text.substr(0, gap), false);
    const auto after = groupCount(text.substr(gap + 2), true);
    return before && after && *before + *after <= 7;
}

} // namespace quillox
