#pragma once

#include "ports/RunLoop.h"

#include <string>

namespace quillox {

/// An hour of the local calendar, and a stretch of time that lies in it.
struct LocalHour {
    std::string day; ///< As "yyyy-MM-dd".
    int hour = 0; ///< 0 to 23.
    RunLoop::WallTime begin; ///< The first moment of the stretch,
    RunLoop::WallTime end; ///< and the first one after it; later than `begin`.
};

/// The calendar and the time zone of this place. Main thread only.
class Calendar {
public:
    virtual ~Calendar() = default;

    virtual LocalHour hourOf(RunLoop::WallTime) const = 0;

    /// The local day so many days before that of `time`, as "yyyy-MM-dd".
    virtual std::string dayBefore(RunLoop::WallTime time, int days) const = 0;
};

} // namespace quillox
