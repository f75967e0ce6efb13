#include "support/Version.h"

#include <array>
#include <charconv>
#include <fmt/format.h>

namespace quillox {

std::optional<Version> Version::parse(std::string_view text)
{
    std::array<unsigned, 3> numbers {};
    const auto* next = text.data();
    const auto* end = text.data() + text.size();
    for (auto& number : numbers) {
        const auto [rest, error] = std::from_chars(next, end, number);
        if (error != std::errc())
            return std::nullopt;
        next = rest != end ? rest + 1 : rest;
    }
    const Version version { static_cast<int>(numbers[0]), static_cast<int>(numbers[1]),
        static_cast<int>(numbers[2]) };
    return version.text() == text ? std::optional(version) : std::nullopt;
}

std::string Version::text() const
{
    return fmt::format("{}.{}.{}", major, minor, patch);
}

} // namespace quillox
