#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// A version of three whole numbers, for example 1.12.0.
struct Version {
    int major = 0;
    int minor = 0;
    int patch = 0;

    /// None unless `text` is exactly what `text()` would say: "1.2" and "1.02.0" are no versions.
    static std::optional<Version> parse(std::string_view text);
    std::string text() const;

    auto operator<=>(const Version&) const = default;
};

} // namespace quillox
