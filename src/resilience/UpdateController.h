#pragma once

#include "ports/Updater.h"
#include "support/Handle.h"

#include <chrono>
#include <functional>
#include <memory>

namespace quillox {

class Calendar;
class RunLoop;

/// Keeps updates away from visitors: checks and downloads are silent, and what was downloaded is
/// installed in the small hours only. Main thread only.
class UpdateController final : public Updater::Delegate {
public:
    static constexpr int offHoursStart = 3; ///< The first hour of the day to install in,
    static constexpr int offHoursEnd = 5; ///< and the first one that is too late.
    static constexpr std::chrono::seconds offHoursInterval { 900 };

    /// All must outlive the controller.
    UpdateController(RunLoop&, const Calendar&, Updaters&);

    static UpdateController& shared() { return *s_shared; }
    static void setShared(UpdateController* controller) { s_shared = controller; }

    /// Once, after launch: makes the updater and starts it, whatever the setting is.
    void configure(bool autoUpdate);

    /// Follows the setting. Switched off, it forgets an update that waits. Nothing happens before
    /// `configure`.
    void apply(bool autoUpdate);

    /// The manual check, with the updater's dialogs. Nothing happens before `configure`.
    void checkForUpdates();

    bool supportsGentleScheduledUpdateReminders() const override { return true; }
    bool shouldHandleShowingScheduledUpdate() const override { return false; }
    bool willInstallUpdateOnQuit(std::function<void()> installNow) override;

private:
    void startOffHoursTimer();
    void installInOffHours();

    inline static UpdateController* s_shared = nullptr;

    RunLoop& m_runLoop;
    const Calendar& m_calendar;
    Updaters& m_updaters;
    std::unique_ptr<Updater> m_controller;
    std::function<void()> m_pendingInstall;
    Handle m_offHoursTimer;
};

} // namespace quillox
