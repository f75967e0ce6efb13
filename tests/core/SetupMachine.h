#pragma once

#include "app/AppState.h"
#include "core/SealedMachine.h"
#include "fakes/FakeAgentServices.h"
#include "fakes/FakeUpdaters.h"
#include "lockdown/KeyDecision.h"
#include "resilience/UpdateController.h"
#include "resilience/Watchdog.h"

namespace quillox {

/// A machine of fakes before it is sealed: what the setup's screens and the launch work on.
struct SetupMachine : SealedMachine {
    /// Made when it is first asked for, so that a test can store settings before that.
    AppState& state()
    {
        if (!made)
            made = std::make_unique<AppState>(AppState::Machine { runLoop, defaults, fileSystem,
                                                  accessibility, dialogs, workspace, application },
                *controller, [this] { return canCreateTap; });
        return *made;
    }

    const KioskSettings& settings() { return state().settings.get(); }
    KioskSettings stored() const { return KioskSettings::load(defaults); }

    void store(bool hasOnboarded, const KioskSettings& settings)
    {
        defaults.setBoolean("hasOnboarded", hasOnboarded);
        settings.save(defaults);
    }

    /// Presses or releases the gesture, and lets so much time pass.
    void hold(bool isDown, RunLoop::Duration passed = std::chrono::milliseconds(1020))
    {
        const auto type = isDown ? EventType::KeyDown : EventType::KeyUp;
        keyboard.down = isDown ? std::set { keys::s } : std::set<KeyCode> {};
        eventMonitors.send({ .type = type, .keyCode = keys::s, .flags = sealModifiers });
        runLoop.advance(passed);
    }
    bool isWatchingForGesture() const
    {
        const std::size_t monitorsOfRun = controller->isActive() ? 2 : 0;
        return eventMonitors.activeMonitors() > monitorsOfRun;
    }

    FakeDefaultsStore defaults;
    FakeAccessibilityTrust accessibility;
    FakeDialogs dialogs;
    FakeWorkspace workspace;
    FakeRunningApplications instances;
    FakeAgentServices agents { runLoop };
    FakeUpdaters updaters { journal };
    Watchdog watchdog { agents, log };
    UpdateController updates { runLoop, calendar, updaters };
    bool canCreateTap = false;
    std::unique_ptr<KioskController> controller = makeController();
    std::unique_ptr<AppState> made;
};

} // namespace quillox
