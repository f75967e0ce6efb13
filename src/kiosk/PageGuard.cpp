#include "kiosk/PageGuard.h"

#include "ports/SystemLog.h"

#include <algorithm>
#include <fmt/format.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// A timer that is this late tells that the program itself was held up; the answer may be
    /// waiting behind it.
    constexpr RunLoop::Duration heldUp = 1s;

    /// A page that ends its process that often in a row is given up for the start page.
    constexpr int incidentsPerPage = 4;

    /// Some pages never finish, because they always wait for more.
    constexpr RunLoop::Duration unfinishedHealthyTime = 60s;

} // namespace

PageGuard::PageGuard(RunLoop& runLoop, SystemLog& log, Delegate& delegate)
    : m_runLoop(runLoop)
    , m_log(log)
    , m_delegate(delegate)
{
}

void PageGuard::start(WebView& view)
{
    stop();
    m_view = &view;
    m_pingTimer = m_runLoop.every(pingInterval, [this] { ping(); });
}

void PageGuard::stop()
{
    m_view = nullptr;
    for (auto* timer : { &m_pingTimer, &m_answerTimer, &m_reloadTimer })
        timer->reset();
    m_hasCommitted = false;
    m_incidentsInARow = 0;
    m_healthyAt.reset();
}

void PageGuard::handleCommittedLoad()
{
    m_healthyAt = m_runLoop.monotonicNow() + unfinishedHealthyTime;
    m_hasCommitted = true;
    m_reloadTimer.reset();
    // Another process may be asked from now on.
    m_answerTimer.reset();
}

void PageGuard::handleFinishedLoad()
{
    m_healthyAt = m_runLoop.monotonicNow() + healthyTime;
}

void PageGuard::ping()
{
    if (m_answerTimer || m_reloadTimer)
        return;
    const auto patience = m_hasCommitted ? answerPatience : startPatience;
    const auto due = m_runLoop.monotonicNow() + patience;
    m_answerTimer = m_runLoop.after(patience, [this, due] { handleSilence(due); });
    m_view->ping(m_lifetime.guard([this] { m_answerTimer.reset(); }));
}

void PageGuard::handleSilence(RunLoop::MonotonicTime due)
{
    m_answerTimer.reset();
    if (m_runLoop.monotonicNow() - due < heldUp)
        m_view->endPageProcess();
}

void PageGuard::handlePageProcessEnd(PageProcessEnd end)
{
    m_answerTimer.reset();
    m_hasCommitted = false;
    m_delegate.coverPage();
    switch (end) {
    case PageProcessEnd::Crashed:
        return recover("the page's process crashed");
    case PageProcessEnd::ExceededMemoryLimit:
        return recover("the page's process took too much memory and was ended");
    case PageProcessEnd::Requested:
        return recover("the page's process did not answer and was ended");
    case PageProcessEnd::MadeRoom:
        m_reloadTimer.reset();
        return m_log.write("Quillox: the page would not leave; its process was ended.");
    }
}

void PageGuard::handleNetworkProcessEnd()
{
    recover("the engine's network process died");
}

void PageGuard::recover(std::string_view incident)
{
    const auto pause = nextPause();
    m_reloadTimer.reset();
    if (pause == 0s) {
        m_log.write(fmt::format("Quillox: {}; loading the page again.", incident));
        m_delegate.reloadPage();
        return;
    }
    m_log.write(
        fmt::format("Quillox: {}; loading the page again in {} s.", incident, pause.count()));
    m_reloadTimer = m_runLoop.after(pause, [this] {
        m_reloadTimer.reset();
        loadSomePage();
    });
}

void PageGuard::loadSomePage()
{
    if (m_incidentsInARow < incidentsPerPage)
        m_delegate.reloadPage();
    else
        m_delegate.loadStartPage();
}

std::chrono::seconds PageGuard::nextPause()
{
    const bool wasHealthy = m_healthyAt && m_runLoop.monotonicNow() >= *m_healthyAt;
    m_healthyAt.reset();
    m_incidentsInARow = wasHealthy ? 1 : m_incidentsInARow + 1;
    if (m_incidentsInARow == 1)
        return 0s;
    const auto doublings = std::min(m_incidentsInARow - 2, 6);
    return std::min(std::chrono::seconds(1 << doublings), longestPause);
}

} // namespace quillox
