#include "app/LaunchHealth.h"

#include "app/AppState.h"
#include "ports/RunLoop.h"

#include <utility>

namespace quillox {

LaunchHealth::LaunchHealth(AppState& state, RunLoop& runLoop, std::function<void()> onHealthy)
    : m_state(state)
    , m_onHealthy(std::move(onHealthy))
    , m_countdown(state.autoStartCountdown.get())
    , m_countdownObservation(state.autoStartCountdown.observe(
          [this](std::optional<int> seconds) { handleCountdown(seconds); }))
{
    m_settling = runLoop.after(settling, [this] {
        const bool isInSetup = !m_countdown && !m_state.isKioskActive.get();
        if (isInSetup)
            handleSetupShown();
    });
}

void LaunchHealth::handleScreenShown()
{
    if (const auto onHealthy = std::exchange(m_onHealthy, nullptr))
        onHealthy();
}

void LaunchHealth::handleCountdown(std::optional<int> seconds)
{
    // The last second leads to the seal; at any other, somebody is here who wants the setup.
    const bool isCancelled = !seconds && m_countdown > 1;
    m_countdown = seconds;
    if (isCancelled)
        handleSetupShown();
}

void LaunchHealth::handleSetupShown()
{
    if (m_state.canShowPages())
        handleScreenShown();
}

} // namespace quillox
