#pragma once

#include "lockdown/SealHold.h"
#include "ports/EventMonitors.h"
#include "ports/KeyState.h"
#include "support/Published.h"

#include <functional>

namespace quillox {

/// Recognises the seal gesture on the setup's own screens. Other than the lock of a sealed run it
/// watches this application's events alone, swallows nothing but the S of the gesture, and tells
/// its progress to observers. Main thread only.
class LaunchArmer {
public:
    struct Machine {
        RunLoop& runLoop;
        EventMonitors& eventMonitors;
        const KeyState& keyState;
    };

    explicit LaunchArmer(Machine);

    Published<double> progress { 0.0 }; ///< 0 to 1; not published again while it stays 0.

    /// Called once each time a hold completes.
    std::function<void()> onComplete;

    /// Watches from now on; an S that is already down begins no hold. Harmless when it does.
    void start();

    /// Ends the watch and any hold.
    void stop();

    /// Whether S is up, as the keyboard reports it.
    bool isSUp() const;

private:
    EventMonitors::Verdict handle(const Event&);
    void beginHold();
    void tick(double progress);
    void cancelHold();

    Machine m_machine;
    Handle m_monitor;
    bool m_isArmed = false; ///< Whether S has been up since the last hold began.
    SealHold m_hold;
};

} // namespace quillox
