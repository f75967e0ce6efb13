#pragma once

#include "ports/Calendar.h"

namespace quillox {

/// The calendar in the time zone of this process's environment, as it is at the time.
class CalendarPosix final : public Calendar {
public:
    LocalHour hourOf(RunLoop::WallTime) const override;
    std::string dayBefore(RunLoop::WallTime, int days) const override;
};

} // namespace quillox
