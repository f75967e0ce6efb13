#pragma once

#include "lockdown/KeyDecision.h"
#include "lockdown/SealHold.h"
#include "ports/EventTap.h"
#include "ports/KeyState.h"
#include "support/Handle.h"

#include <functional>
#include <memory>

namespace quillox {

class SystemLog;

/// The keyboard lock of a sealed run: swallows every shortcut of the session, and recognises the
/// one way out, Command+Shift+S held for a second. Main thread only.
class SystemKeyBlocker {
public:
    struct Machine {
        RunLoop& runLoop;
        EventTaps& eventTaps;
        const KeyState& keyState;
        SystemLog& log;
    };

    explicit SystemKeyBlocker(Machine);

    /// Called once each time a hold completes. Set it before `start`.
    std::function<void()> onExitCombo;

    /// Progress of the hold, 0 to 1; zeros may come repeatedly. Set it before `start`.
    std::function<void(double)> onHoldProgress;

    /// Whether the blocker runs afterwards; true also when it already did. One that could not start
    /// does so by itself as soon as the system lets it, until it is stopped.
    bool start();

    /// Harmless when not started. A hold that runs goes on.
    void stop();

    bool isRunning() const { return static_cast<bool>(m_eventTap); }

    /// Whether a tap can be created at this moment; none is left behind.
    static bool canCreateTap(EventTaps&);

private:
    bool createTap();
    EventTaps::Verdict handle(const Event&);
    void beginHold();
    void tickHold(double progress);
    void cancelHold();

    Machine m_machine;
    std::unique_ptr<EventTap> m_eventTap;
    Handle m_availability; ///< Held while a tap is wanted and could not be created.
    bool m_isArmed = false; ///< Whether S has been up since the last hold began.
    SealHold m_hold;
};

} // namespace quillox
