#include "usage/UsageTracker.h"

#include <algorithm>

namespace quillox {

UsageTracker::UsageTracker(RunLoop& runLoop, UsageFile& file, const Calendar& calendar)
    : m_runLoop(runLoop)
    , m_dates(calendar, runLoop)
    , m_store(file, m_dates)
    , m_lastEvent(runLoop.now())
    , m_lastMoment(runLoop.monotonicNow())
{
}

void UsageTracker::begin(const std::string& source, std::chrono::seconds sessionGap)
{
    m_source = source;
    m_sessionGap = std::max(sessionGap, shortestGap);
    m_isRunning = true;
    m_isInSession = false;
    m_lastEvent = m_runLoop.now();
    m_lastMoment = m_runLoop.monotonicNow();
    m_activeAccrual = Seconds(0);
    m_hour = {};
    m_flushTimer = m_runLoop.every(flushInterval, [this] { m_store.save(); });
}

void UsageTracker::recordActivity(RunLoop::WallTime at)
{
    if (!m_isRunning)
        return;
    lookAtCalendar(at);
    const auto moment = m_runLoop.monotonicNow();
    // A machine that slept notices it on the calendar alone.
    const Seconds passed = moment - m_lastMoment;
    const Seconds pause = std::max<Seconds>(passed, at - m_lastEvent);
    if (m_isInSession && pause <= m_sessionGap)
        accrue(passed);
    else
        beginSession();
    m_store.setLastUsed(at);
    m_lastEvent = at;
    m_lastMoment = moment;
}

void UsageTracker::accrue(Seconds passed)
{
    m_activeAccrual += passed;
    const auto whole = static_cast<std::int64_t>(m_activeAccrual.count());
    if (whole < 1)
        return;
    m_store.addActive(whole, m_source, m_hour.day);
    m_activeAccrual -= Seconds(whole);
}

void UsageTracker::beginSession()
{
    m_isInSession = true;
    m_activeAccrual = Seconds(0);
    m_store.recordSessionStart(m_source, m_hour.day, m_hour.hour);
}

void UsageTracker::lookAtCalendar(RunLoop::WallTime at)
{
    if (at < m_hour.begin || at >= m_hour.end)
        m_hour = m_dates.hourOf(at);
}

void UsageTracker::end()
{
    m_isRunning = false;
    m_isInSession = false;
    m_flushTimer.reset();
    m_store.save();
}

} // namespace quillox
