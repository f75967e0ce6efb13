#pragma once

#include "support/Lifetime.h"

#include <string>

namespace quillox {

class AccessibilityTrust;
class AppState;
class Application;
class RunLoop;
class RunningApplications;
class UpdateController;

/// What happens once, right after launch. Main thread only.
class AppDelegate {
public:
    struct Machine {
        RunLoop& runLoop;
        AccessibilityTrust& accessibility;
        RunningApplications& runningApplications;
        Application& application;
    };

    /// `bundleIdentifier` may be empty.
    AppDelegate(Machine, AppState&, UpdateController&, std::string bundleIdentifier);

    /// Gives way to a copy that runs already, else sets updates up and decides whether to seal.
    /// False when this copy gives way: it ends, and must show nothing.
    bool applicationDidFinishLaunching();

    /// Another copy was started and gave way to this one: whether the setup's windows come forward.
    /// During a run nothing changes.
    bool applicationShouldHandleReopen() const;

    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }

private:
    bool activateRunningCopy();
    bool shouldAutoStart() const;

    Machine m_machine;
    AppState& m_state;
    UpdateController& m_updates;
    std::string m_bundleIdentifier;
    Lifetime m_lifetime;
};

} // namespace quillox
