#include "app/AppDelegate.h"

#include "app/AppState.h"
#include "ports/AccessibilityTrust.h"
#include "ports/Application.h"
#include "ports/RunLoop.h"
#include "ports/RunningApplications.h"
#include "resilience/UpdateController.h"

#include <algorithm>
#include <utility>

namespace quillox {

namespace {

    constexpr int countdownSeconds = 5;

} // namespace

AppDelegate::AppDelegate(
    Machine machine, AppState& state, UpdateController& updates, std::string bundleIdentifier)
    : m_machine(machine)
    , m_state(state)
    , m_updates(updates)
    , m_bundleIdentifier(std::move(bundleIdentifier))
{
}

bool AppDelegate::applicationDidFinishLaunching()
{
    if (activateRunningCopy()) {
        m_machine.application.terminate();
        return false;
    }
    m_updates.configure(m_state.settings.get().autoUpdate);
    if (shouldAutoStart()) {
        m_machine.runLoop.post(
            m_lifetime.guard([this] { m_state.beginAutoStart(countdownSeconds); }));
    }
    return true;
}

bool AppDelegate::applicationShouldHandleReopen() const
{
    return !m_state.isKioskActive.get();
}

bool AppDelegate::activateRunningCopy()
{
    auto& applications = m_machine.runningApplications;
    const auto running = applications.list(m_bundleIdentifier);
    const auto other = std::ranges::find_if(running,
        [own = applications.currentProcess()](ProcessId process) { return process != own; });
    if (other == running.end())
        return false;
    applications.activateAllWindows(*other);
    return true;
}

bool AppDelegate::shouldAutoStart() const
{
    return m_state.hasOnboarded.get() && m_state.settings.get().autoStartKiosk
        && m_state.hasSource() && m_machine.accessibility.isProcessTrusted();
}

} // namespace quillox
