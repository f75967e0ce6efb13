#pragma once

#include "ports/Dialogs.h"
#include "ports/Updater.h"
#include "resilience/update/UpdateCycle.h"
#include "support/Lifetime.h"

#include <chrono>

namespace quillox {

class UpdateProgressPanels;
class Workspace;

/// The updater of an installation that nobody else maintains. Its end is the application's: an
/// update that waits, and that nobody has taken charge of, is then installed. Main thread only.
class SelfUpdater final : public Updater {
public:
    static constexpr std::chrono::minutes firstCheck { 10 };
    static constexpr std::chrono::hours checkInterval { 24 };
    /// After a failure; every further one doubles it, up to the interval.
    static constexpr std::chrono::minutes firstPause { 1 };

    struct Surroundings {
        Dialogs& dialogs;
        UpdateProgressPanels& progressPanels;
        Workspace& workspace;
        /// From 0 to 1, another one on every machine: keeps them from asking the feed all at once.
        double jitter = 0;
    };

    /// All outlive the updater.
    SelfUpdater(UpdateMachine, Surroundings, Delegate&);
    SelfUpdater(const SelfUpdater&) = delete;
    SelfUpdater& operator=(const SelfUpdater&) = delete;
    ~SelfUpdater() override;

    void setAutomaticallyChecksForUpdates(bool) override;
    void setAutomaticallyDownloadsUpdates(bool) override;
    void startUpdater() override;
    void checkForUpdates() override;

private:
    using Outcome = UpdateCycle::Outcome;

    void schedule(RunLoop::Duration);
    void scheduleAfterFailure();
    void check();
    void handleChecked(const Outcome&);
    void handleFound();
    void fetch();
    void handleFetched(const Outcome&);
    bool handleTrouble(const Outcome&);
    void offer();
    void showProgress();
    void announce();
    void installNow();
    bool install();
    void tell(Alert::Style, std::string message, std::string informativeText);

    UpdateMachine m_machine;
    Surroundings m_surroundings;
    Delegate& m_delegate;
    UpdateCycle m_cycle;
    bool m_checks = false;
    bool m_downloads = false;
    bool m_isStarted = false;
    bool m_isOperatorWaiting = false; ///< Who asked by hand gets an answer.
    bool m_isDialogOpen = false;
    bool m_wantsInstall = false; ///< The operator said so.
    bool m_isTaken = false; ///< The delegate says when.
    bool m_isInstalled = false;
    int m_failures = 0; ///< In a row.
    Handle m_timer;
    Handle m_progressPanel;
    Lifetime m_lifetime;
};

} // namespace quillox
