#pragma once

#include "ports/Calendar.h"
#include "ports/RunLoop.h"

#include <string>

namespace quillox {

/// Days of the local calendar as text; the order of the texts is the order of the days.
class UsageDate {
public:
    UsageDate(const Calendar& calendar, const RunLoop& runLoop)
        : m_calendar(calendar)
        , m_runLoop(runLoop)
    {
    }

    /// "yyyy-MM-dd".
    std::string fmt(RunLoop::WallTime time) const { return m_calendar.hourOf(time).day; }

    /// Today for 0, yesterday for 1.
    std::string daysAgo(int days) const { return m_calendar.dayBefore(m_runLoop.now(), days); }

    LocalHour hourOf(RunLoop::WallTime time) const { return m_calendar.hourOf(time); }
    RunLoop::WallTime now() const { return m_runLoop.now(); }

private:
    const Calendar& m_calendar;
    const RunLoop& m_runLoop;
};

} // namespace quillox
