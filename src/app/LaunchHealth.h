#pragma once

#include "support/Handle.h"

#include <chrono>
#include <functional>
#include <optional>

namespace quillox {

class AppState;
class RunLoop;

/// Judges whether this start of the application came to where it leads: to the sealed page, or the
/// notice in its place, when it seals by itself, and to the setup otherwise. One that was to seal
/// and did not has failed, however well its setup looks, and so has one whose setup could never
/// seal for want of an engine. Main thread only.
class LaunchHealth {
public:
    /// By then a countdown runs if one is to come.
    static constexpr std::chrono::seconds settling { 2 };

    /// Make it when the application has finished launching. `onHealthy` is called at most once. The
    /// state and the loop outlive this.
    LaunchHealth(AppState&, RunLoop&, std::function<void()> onHealthy);

    /// A sealed page, or the notice that it cannot be reached, is on the screen.
    void handleScreenShown();

private:
    void handleCountdown(std::optional<int> seconds);
    void handleSetupShown();

    AppState& m_state;
    std::function<void()> m_onHealthy;
    std::optional<int> m_countdown;
    Handle m_countdownObservation;
    Handle m_settling;
};

} // namespace quillox
