#include "config/PercentEscapes.h"

namespace quillox {

namespace {

    /// -1 for what is no hexadecimal digit.
    int hexValue(char c)
    {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    }

} // namespace

std::optional<std::string> percentDecoded(std::string_view text)
{
    std::string decoded;
    decoded.reserve(text.size());
    while (true) {
        const auto escape = text.find('%');
        decoded += text.substr(0, escape);
        if (escape == std::string_view::npos)
            return decoded;
        text.remove_prefix(escape);
        const int high = text.size() > 2 ? hexValue(text[1]) : -1;
        const int low = text.size() > 2 ? hexValue(text[2]) : -1;
        if (high < 0 || low < 0 || (high == 0 && low == 0))
            return std::nullopt;
        decoded += static_cast<char>(high * 16 + low);
        text.remove_prefix(3);
    }
}

} // namespace quillox
