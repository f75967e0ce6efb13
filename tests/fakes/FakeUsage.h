#pragma once

#include "ports/Calendar.h"
#include "ports/UsageFile.h"

#include <fmt/format.h>
#include <sstream>

namespace quillox {

/// The calendar of a place that is a fixed time ahead of UTC, until the test moves it elsewhere.
struct FakeCalendar final : Calendar {
    std::chrono::hours offset { 0 };

    LocalHour hourOf(RunLoop::WallTime time) const override
    {
        const auto begin = std::chrono::floor<std::chrono::hours>(time);
        const auto hours = std::chrono::floor<std::chrono::hours>(time + offset).time_since_epoch();
        return { dayBefore(time, 0), static_cast<int>(hours.count() % 24), begin,
            begin + std::chrono::hours(1) };
    }

    std::string dayBefore(RunLoop::WallTime time, int days) const override
    {
        const std::chrono::year_month_day day
            = std::chrono::floor<std::chrono::days>(time + offset) - std::chrono::days(days);
        return fmt::format("{:04}-{:02}-{:02}", static_cast<int>(day.year()),
            static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()));
    }
};

/// A file in memory; every write is there at once.
struct FakeUsageFile final : UsageFile {
    std::optional<std::string> contents;
    bool isBroken = false; ///< Writes fail.
    bool wasSetAside = false;
    int writes = 0;

    std::optional<std::string> read() override { return contents; }
    void setAside() override { wasSetAside = true; }
    void write(Producer producer) override
    {
        ++writes;
        std::ostringstream text;
        producer(text);
        if (!isBroken)
            contents = text.str();
    }
    bool hasFailed() const override { return isBroken; }
};

} // namespace quillox
