#include "resilience/UpdateController.h"

#include "ports/Calendar.h"
#include "ports/RunLoop.h"

#include <utility>

namespace quillox {

UpdateController::UpdateController(RunLoop& runLoop, const Calendar& calendar, Updaters& updaters)
    : m_runLoop(runLoop)
    , m_calendar(calendar)
    , m_updaters(updaters)
{
}

void UpdateController::configure(bool autoUpdate)
{
    if (!m_controller)
        m_controller = m_updaters.makeUpdater(*this);
    apply(autoUpdate);
    m_controller->startUpdater();
    startOffHoursTimer();
}

void UpdateController::apply(bool autoUpdate)
{
    if (!m_controller)
        return;
    m_controller->setAutomaticallyChecksForUpdates(autoUpdate);
    m_controller->setAutomaticallyDownloadsUpdates(autoUpdate);
    if (!autoUpdate)
        m_pendingInstall = nullptr;
}

void UpdateController::checkForUpdates()
{
    if (m_controller)
        m_controller->checkForUpdates();
}

bool UpdateController::willInstallUpdateOnQuit(std::function<void()> installNow)
{
    m_pendingInstall = std::move(installNow);
    return true;
}

void UpdateController::startOffHoursTimer()
{
    m_offHoursTimer = m_runLoop.every(offHoursInterval, [this] { installInOffHours(); });
}

void UpdateController::installInOffHours()
{
    if (!m_pendingInstall)
        return;
    const int hour = m_calendar.hourOf(m_runLoop.now()).hour;
    if (hour < offHoursStart || hour >= offHoursEnd)
        return;
    const auto install = std::exchange(m_pendingInstall, nullptr);
    install();
}

} // namespace quillox
