#pragma once

#include "ports/RunLoop.h"
#include "support/Handle.h"
#include "usage/UsageStore.h"

#include <chrono>
#include <string>

namespace quillox {

/// Turns the visitors' input into sessions and engaged time, and saves them now and then. Main
/// thread only.
class UsageTracker {
public:
    static constexpr std::chrono::seconds flushInterval { 20 };
    static constexpr std::chrono::seconds shortestGap { 5 };

    /// Loads the statistics. All must outlive the tracker.
    UsageTracker(RunLoop&, UsageFile&, const Calendar&);

    static UsageTracker& shared() { return *s_shared; }
    static void setShared(UsageTracker* tracker) { s_shared = tracker; }

    UsageStore& store() { return m_store; }

    /// From now on input counts for `source`. A pause longer than `sessionGap`, which is at least
    /// `shortestGap`, begins a new session.
    void begin(const std::string& source, std::chrono::seconds sessionGap);

    /// One event of input at the calendar's time `at`, which is now. However the calendar's clock
    /// is set, engaged time is what has really passed.
    void recordActivity(RunLoop::WallTime at);

    /// Stops counting, and saves. What is left of a second is dropped.
    void end();

private:
    using Seconds = std::chrono::duration<double>;

    void accrue(Seconds);
    void beginSession();
    void lookAtCalendar(RunLoop::WallTime at);

    inline static UsageTracker* s_shared = nullptr;

    RunLoop& m_runLoop;
    UsageDate m_dates;
    UsageStore m_store;
    std::string m_source;
    bool m_isRunning = false;
    bool m_isInSession = false;
    RunLoop::WallTime m_lastEvent; ///< On the calendar,
    RunLoop::MonotonicTime m_lastMoment; ///< and on the clock that is never set.
    Seconds m_activeAccrual { 0 }; ///< Below one after each event.
    Seconds m_sessionGap { 60 };
    LocalHour m_hour; ///< That of the last event.
    Handle m_flushTimer;
};

} // namespace quillox
