#include "resilience/update/SelfUpdater.h"

#include "ports/Installation.h"
#include "ports/RunLoop.h"
#include "ports/SystemLog.h"
#include "ports/UpdateProgressPanels.h"
#include "ports/Workspace.h"
#include "resilience/update/UpdateTrial.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace quillox {

using Kind = UpdateCycle::Outcome::Kind;

SelfUpdater::SelfUpdater(UpdateMachine machine, Surroundings surroundings, Delegate& delegate)
    : m_machine(machine)
    , m_surroundings(surroundings)
    , m_delegate(delegate)
    , m_cycle(std::move(machine))
{
}

SelfUpdater::~SelfUpdater()
{
    m_cycle.cancel();
    if (!m_isInstalled && !m_isTaken)
        install();
}

void SelfUpdater::setAutomaticallyChecksForUpdates(bool checks)
{
    if (std::exchange(m_checks, checks) == checks || !m_isStarted)
        return;
    schedule(firstCheck);
}

void SelfUpdater::setAutomaticallyDownloadsUpdates(bool downloads)
{
    m_downloads = downloads;
    if (downloads)
        return;
    m_isTaken = false;
    if (m_cycle.isBusy() && !m_isOperatorWaiting && !m_wantsInstall)
        m_cycle.cancel();
}

void SelfUpdater::startUpdater()
{
    m_isStarted = true;
    schedule(firstCheck);
    if (m_downloads && m_cycle.staged())
        m_machine.runLoop.post(m_lifetime.guard([this] {
            if (m_downloads && m_cycle.staged())
                announce();
        }));
}

void SelfUpdater::checkForUpdates()
{
    if (m_isDialogOpen || m_wantsInstall)
        return;
    m_isOperatorWaiting = true;
    if (!m_cycle.isBusy())
        check();
    else if (m_cycle.found())
        showProgress();
}

void SelfUpdater::schedule(RunLoop::Duration delay)
{
    m_timer.reset();
    if (!m_checks || !m_isStarted)
        return;
    const auto spread = std::chrono::duration_cast<RunLoop::Duration>(
        std::chrono::duration<double, std::nano>(delay) * m_surroundings.jitter / 2);
    m_timer = m_machine.runLoop.after(delay + spread, [this] {
        if (m_cycle.isBusy() || m_isDialogOpen)
            schedule(firstCheck);
        else
            check();
    });
}

void SelfUpdater::scheduleAfterFailure()
{
    RunLoop::Duration pause = firstPause;
    for (int doubling = 0; doubling < m_failures && pause < checkInterval; ++doubling)
        pause *= 2;
    ++m_failures;
    schedule(std::min<RunLoop::Duration>(pause, checkInterval));
}

void SelfUpdater::check()
{
    m_cycle.check([this](const Outcome& outcome) { handleChecked(outcome); });
}

void SelfUpdater::handleChecked(const Outcome& outcome)
{
    if (handleTrouble(outcome))
        return;
    schedule(checkInterval);
    if (outcome.kind == Kind::Found)
        return handleFound();
    m_failures = 0;
    if (std::exchange(m_isOperatorWaiting, false))
        tell(Alert::Style::Informational, "Quillox is up to date",
            fmt::format(
                "Version {} is the newest one.", m_machine.installation.runningVersion().text()));
}

void SelfUpdater::handleFound()
{
    if (m_isOperatorWaiting)
        offer();
    else if (m_downloads)
        fetch();
    else if (m_delegate.shouldHandleShowingScheduledUpdate())
        offer();
}

void SelfUpdater::offer()
{
    m_isOperatorWaiting = false;
    m_isDialogOpen = true;
    const Alert alert { Alert::Style::Informational, "A new version of Quillox is available",
        fmt::format("Version {} can be installed now; {} is running. Quillox starts anew for it.",
            m_cycle.found()->text(), m_machine.installation.runningVersion().text()),
        { "Install", "Later" } };
    m_surroundings.dialogs.present(alert, m_lifetime.guard([this](std::size_t button) {
        m_isDialogOpen = false;
        m_wantsInstall = button == 0;
        if (m_wantsInstall || m_downloads)
            fetch();
    }));
}

void SelfUpdater::fetch()
{
    if (m_wantsInstall && m_cycle.staged() != m_cycle.found())
        showProgress();
    m_cycle.fetch([this](const Outcome& outcome) { handleFetched(outcome); });
}

void SelfUpdater::showProgress()
{
    const auto giveUp = [this] {
        // Who only looked on as it came by itself does not end it.
        if (std::exchange(m_wantsInstall, false))
            m_cycle.cancel();
        m_isOperatorWaiting = false;
        m_progressPanel.reset();
    };
    m_progressPanel = m_surroundings.progressPanels.show(
        fmt::format("Downloading version {}", m_cycle.found()->text()), m_cycle.progress(), giveUp);
}

void SelfUpdater::handleFetched(const Outcome& outcome)
{
    m_progressPanel.reset();
    if (handleTrouble(outcome))
        return;
    m_failures = 0;
    if (m_wantsInstall)
        installNow();
    else if (m_isOperatorWaiting)
        offer();
    else if (m_downloads)
        announce();
}

/// Whether it was trouble, which is then dealt with.
bool SelfUpdater::handleTrouble(const Outcome& outcome)
{
    if (outcome.kind != Kind::Refused && outcome.kind != Kind::Failed)
        return false;
    if (outcome.kind == Kind::Failed) {
        scheduleAfterFailure();
    } else {
        m_failures = 0;
        schedule(checkInterval);
    }
    const bool wasAsked = std::exchange(m_isOperatorWaiting, false);
    const bool wasWanted = std::exchange(m_wantsInstall, false);
    if (wasAsked || wasWanted)
        tell(Alert::Style::Warning, "The update did not succeed",
            fmt::format("{}: {}.",
                outcome.kind == Kind::Failed ? "There was no complete answer"
                                             : "What the server offers was refused",
                outcome.reason));
    return true;
}

void SelfUpdater::announce()
{
    m_isTaken = m_delegate.willInstallUpdateOnQuit(m_lifetime.guard([this] { installNow(); }));
}

void SelfUpdater::installNow()
{
    const bool wasWanted = std::exchange(m_wantsInstall, false);
    if (m_isInstalled)
        return;
    if (install())
        m_surroundings.workspace.relaunch();
    else if (wasWanted)
        tell(Alert::Style::Warning, "The update did not succeed",
            "It could not be put in its place. The system log tells why.");
}

/// Makes what is staged the version of the next start. The running one stays where it is.
bool SelfUpdater::install()
{
    const auto version = m_cycle.staged();
    const auto notes = m_cycle.notes();
    const auto running = m_machine.installation.runningVersion();
    if (!version || !m_cycle.write(UpdateTrial::begun(notes, *version, running)))
        return false;
    // From here on the launcher would carry it through, should this process end.
    if (const auto failure = m_machine.installation.makeCurrent(*version)) {
        m_machine.log.write(fmt::format(
            "Quillox: version {} could not be installed: {}.", version->text(), *failure));
        m_cycle.write(notes);
        return false;
    }
    m_machine.log.write(fmt::format("Quillox: version {} is installed.", version->text()));
    m_isInstalled = true;
    return true;
}

void SelfUpdater::tell(Alert::Style style, std::string message, std::string informativeText)
{
    m_isDialogOpen = true;
    m_surroundings.dialogs.present(
        Alert { style, std::move(message), std::move(informativeText), { "Close" } },
        m_lifetime.guard([this](std::size_t) { m_isDialogOpen = false; }));
}

} // namespace quillox
