#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace quillox {

/// What one site was used on one day.
struct UsageDay {
    static constexpr std::size_t hoursPerDay = 24;

    std::string date; ///< The local day, as "yyyy-MM-dd".
    std::string source; ///< The usage key of the site's settings.
    std::int64_t sessions = 0;
    std::int64_t activeSeconds = 0;
    std::array<std::int64_t, hoursPerDay> hours {}; ///< Sessions begun in each hour.

    std::string id() const { return key(date, source); }
    static std::string key(const std::string& date, const std::string& source)
    {
        return date + "|" + source;
    }

    bool operator==(const UsageDay&) const = default;
};

} // namespace quillox
