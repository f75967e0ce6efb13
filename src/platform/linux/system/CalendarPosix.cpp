#include "platform/linux/system/CalendarPosix.h"

#include <ctime>
#include <fmt/format.h>

namespace quillox {

namespace {

    std::tm localTime(RunLoop::WallTime time)
    {
        const auto seconds
            = std::chrono::floor<std::chrono::seconds>(time.time_since_epoch()).count();
        const auto value = static_cast<std::time_t>(seconds);
        std::tm parts {};
        ::tzset(); // The machine may have been told another time zone.
        ::localtime_r(&value, &parts);
        return parts;
    }

    std::string dayText(const std::tm& parts)
    {
        return fmt::format(
            "{:04}-{:02}-{:02}", parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday);
    }

} // namespace

LocalHour CalendarPosix::hourOf(RunLoop::WallTime time) const
{
    using namespace std::chrono;
    const auto parts = localTime(time);
    // Clocks are never set by less than a quarter of an hour, and only at its beginning.
    constexpr minutes quarter { 15 };
    const auto second = floor<seconds>(time.time_since_epoch());
    const auto begin = second - seconds(parts.tm_sec) - minutes(parts.tm_min % quarter.count());
    return { dayText(parts), parts.tm_hour, RunLoop::WallTime(begin),
        RunLoop::WallTime(begin + quarter) };
}

std::string CalendarPosix::dayBefore(RunLoop::WallTime time, int days) const
{
    auto parts = localTime(time);
    parts.tm_mday -= days;
    parts.tm_hour = 12; // There on every day, whatever the clocks do at night.
    parts.tm_isdst = -1;
    if (std::mktime(&parts) == -1)
        return dayText(localTime(time));
    return dayText(parts);
}

} // namespace quillox
