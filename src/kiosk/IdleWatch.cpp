#include "kiosk/IdleWatch.h"

#include <utility>

namespace quillox {

IdleWatch::IdleWatch(RunLoop& runLoop, EventMonitors& eventMonitors)
    : m_runLoop(runLoop)
    , m_eventMonitors(eventMonitors)
{
}

void IdleWatch::start(std::chrono::seconds limit, std::function<void()> onIdle)
{
    if (limit < std::chrono::seconds(1))
        return;
    m_onIdle = std::move(onIdle);
    noteActivity();
    m_activityMonitor = m_eventMonitors.addLocalMonitor(activityMask, [this](const Event&) {
        noteActivity();
        return EventMonitors::Verdict::Pass;
    });
    m_idleTimer = m_runLoop.every(checkInterval, [this, limit] { check(limit); });
}

void IdleWatch::stop()
{
    m_idleTimer.reset();
    m_activityMonitor.reset();
}

void IdleWatch::noteActivity()
{
    m_lastActivity = m_runLoop.monotonicNow();
    m_didIdleReset = false;
}

void IdleWatch::check(std::chrono::seconds limit)
{
    if (m_didIdleReset || m_runLoop.monotonicNow() - m_lastActivity < limit)
        return;
    m_didIdleReset = true;
    m_onIdle();
}

} // namespace quillox
