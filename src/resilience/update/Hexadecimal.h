#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// The value of a lower-case hexadecimal digit, -1 for any other character.
constexpr int hexadecimalDigit(char character)
{
    if (character >= '0' && character <= '9')
        return character - '0';
    return character >= 'a' && character <= 'f' ? character - 'a' + 10 : -1;
}

/// So many bytes from twice as many lower-case hexadecimal digits; none from anything else.
inline std::optional<std::string> bytesFromHexadecimal(std::string_view text, std::size_t count)
{
    if (text.size() != 2 * count)
        return std::nullopt;
    std::string bytes;
    for (std::size_t index = 0; index < count; ++index) {
        const int high = hexadecimalDigit(text[2 * index]);
        const int low = hexadecimalDigit(text[2 * index + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.push_back(static_cast<char>(high * 16 + low));
    }
    return bytes;
}

} // namespace quillox
