#include "kiosk/Connectivity.h"

#include <algorithm>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr RunLoop::Duration longestPatience = 60s;
    /// Timers come a little late now and then.
    constexpr RunLoop::Duration timerSlack = 1s;
    /// What had to be loaded again that often, in vain, is given up for the start page: the address
    /// may have been good for once only.
    constexpr int retriesPerPage = 12;

} // namespace

Connectivity::Connectivity(RunLoop& runLoop, PathMonitors& pathMonitors, Delegate& delegate)
    : m_runLoop(runLoop)
    , m_pathMonitors(pathMonitors)
    , m_delegate(delegate)
{
}

void Connectivity::reset(Source source)
{
    m_source = source;
    m_model.offline.set(false);
}

void Connectivity::startNetworkMonitor()
{
    auto handle
        = m_monitoring.emplace().guard([this](PathStatus status) { handlePathUpdate(status); });
    m_pathMonitor = m_pathMonitors.startMonitor(
        queueLabel, [&runLoop = m_runLoop, handle = std::move(handle)](PathStatus status) {
            runLoop.post([handle, status]() mutable { handle(status); });
        });
}

void Connectivity::stopNetworkMonitor()
{
    m_pathMonitor.reset();
    m_monitoring.reset();
    m_retryTimer.reset();
}

void Connectivity::handlePathUpdate(PathStatus status)
{
    if (status == PathStatus::Satisfied) {
        if (m_model.offline.get())
            reload();
        return;
    }
    if (m_source == Source::Network)
        handleMissingPage();
}

void Connectivity::handleLoadFailure(const LoadError& error)
{
    if (error.domain == LoadError::Domain::UrlLoading && error.code != urlErrors::cancelled)
        handleMissingPage();
}

void Connectivity::handleMissingPage()
{
    if (m_source == Source::LocalFolder)
        return;
    m_model.offline.set(true);
    startRetry();
}

void Connectivity::coverPage()
{
    m_retryTimer.reset();
    if (m_source != Source::LocalFolder)
        m_model.offline.set(true);
}

void Connectivity::handleFinishedLoad()
{
    m_model.offline.set(false);
    m_retryTimer.reset();
}

void Connectivity::startRetry()
{
    if (m_retryTimer)
        return;
    m_retries = 0;
    m_patience = retryInterval;
    m_lastReload = m_runLoop.monotonicNow();
    m_retryTimer = m_runLoop.every(retryInterval, [this] { retry(); });
}

void Connectivity::retry()
{
    if (isWorthWaitingFor())
        return;
    ++m_retries;
    if (m_retries % retriesPerPage == 0) {
        m_lastReload = m_runLoop.monotonicNow();
        m_delegate.loadStartPage();
    } else {
        reload();
    }
}

bool Connectivity::isWorthWaitingFor()
{
    switch (m_delegate.loadPhase()) {
    case LoadPhase::Idle:
        m_patience = retryInterval;
        return false;
    case LoadPhase::Committed:
        return true;
    case LoadPhase::Provisional:
        break;
    }
    if (m_runLoop.monotonicNow() - m_lastReload + timerSlack < m_patience)
        return true;
    // A server that is only slow would never get to answer if every try were cut off as early as
    // the first.
    m_patience = std::min(2 * m_patience, longestPatience);
    return false;
}

void Connectivity::reload()
{
    m_lastReload = m_runLoop.monotonicNow();
    m_delegate.reloadPage();
}

} // namespace quillox
