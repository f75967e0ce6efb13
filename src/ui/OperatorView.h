#pragma once

#include "lockdown/LaunchArmer.h"
#include "lockdown/SealOverlays.h"
#include "lockdown/SealPrompt.h"
#include "support/Handle.h"
#include "ui/Caption.h"
#include "ui/OperatorForm.h"
#include "usage/UsageStatsView.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

class AppState;
class Workspace;

/// The operator's screen: the form of all settings, and at its foot the block from which the
/// display is sealed by holding the gesture. Main thread only.
class OperatorView {
public:
    struct Machine {
        LaunchArmer::Machine gesture;
        OperatorForm::Machine form;
        UsageStore& usage;
        Workspace& workspace;
    };

    OperatorView(AppState&, Machine, std::string appVersion);

    static constexpr double logoHeight = 48; ///< Points.
    static constexpr Caption usageCaption { "USAGE",
        "How much the display gets used — sessions, engaged time, last used" };
    static constexpr std::string_view usageSymbol = "chevron.right";

    static constexpr std::string_view sealHeading = "THE ONLY WAY OUT";
    static constexpr std::string_view sealHelp
        = "Holding ⌘⇧S is the only way in and out of kiosk mode.\nPerform it now to launch.";

    static constexpr std::string_view footer = "KIOSK MODE MACHINE";
    static constexpr std::string_view guideLink = "SETUP GUIDE ↗";
    static constexpr std::string_view guideHelp = "Open the macOS setup guide in your browser";

    OperatorForm& form() { return m_form; }

    /// While the screen is there, it watches for the gesture whenever nothing else is going on.
    void appear();
    void disappear();

    /// Not while a run hides the screen, a question or a sheet covers it or a countdown runs: what
    /// is typed then is not meant for it.
    bool isEnabled() const;

    /// What the bar of the seal block says.
    SealBar sealAction() const;

    /// The banner over the screen: what is missing, as one line,
    SealHintOverlay hintBanner() const;
    /// or how far the gesture is; it stays up until the kiosk opens.
    SealHoldOverlay holdBanner() const;
    /// The gesture is done, and its keys are still down.
    bool isWaitingForRelease() const { return m_waitingForRelease.get(); }

    /// None while no password is asked for.
    SealPrompt* launchPrompt() const
    {
        return m_showLaunchPassword.get() ? m_prompt.get() : nullptr;
    }

    /// None while the sheet is closed.
    UsageStatsView* stats() { return m_showStats.get() ? &*m_stats : nullptr; }
    void openStats();
    void closeStats();

    void openSetupGuide();
    void openWebSite();

    /// Calls back after anything that is shown has changed, but for the form's own and the gesture.
    [[nodiscard]] std::vector<Handle> observe(const std::function<void()>& onChange);
    /// Calls back sixty times a second during a hold, and when it is done.
    [[nodiscard]] std::vector<Handle> observeGesture(const std::function<void()>& onChange);

private:
    bool isPasswordRequired() const;
    /// What must be done before the display can be sealed; empty when nothing is.
    std::string_view missing() const;

    void updateArmer();
    void rearm();
    void holdCompleted();
    void launchWhenKeysReleased(int attempt);
    void askForPassword();
    void dismissPrompt();
    void handleActiveChanged();

    AppState& m_app;
    RunLoop& m_runLoop;
    UsageStore& m_usage;
    Workspace& m_workspace;
    OperatorForm m_form;
    LaunchArmer m_armer;
    bool m_isThere = false;
    Published<bool> m_waitingForRelease { false };
    Published<bool> m_showLaunchPassword { false };
    Published<bool> m_showStats { false };
    std::unique_ptr<SealPrompt> m_prompt;
    std::optional<UsageStatsView> m_stats;
    Handle m_releaseCheck;
    std::vector<Handle> m_observations;
};

} // namespace quillox
