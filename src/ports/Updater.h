#pragma once

#include <functional>
#include <memory>

namespace quillox {

/// Looks for newer versions of the application, fetches and installs them, with dialogs of its own
/// where the operator asked for it. It reports its own failures. Main thread only.
class Updater {
public:
    /// Whoever decides when a visitor must not be disturbed.
    class Delegate {
    public:
        virtual ~Delegate() = default;

        /// Whether the delegate tells the user of scheduled updates in its own, quiet way.
        virtual bool supportsGentleScheduledUpdateReminders() const = 0;

        /// Whether the updater shows its dialog for an update that a scheduled check has found.
        virtual bool shouldHandleShowingScheduledUpdate() const = 0;

        /// An update is downloaded and would be installed when the application quits. True takes
        /// charge of it: `installNow` installs it at once and starts the application anew.
        virtual bool willInstallUpdateOnQuit(std::function<void()> installNow) = 0;
    };

    virtual ~Updater() = default;

    virtual void setAutomaticallyChecksForUpdates(bool) = 0;
    virtual void setAutomaticallyDownloadsUpdates(bool) = 0;

    /// Scheduled checks begin, if they are wanted.
    virtual void startUpdater() = 0;

    /// Checks now, and shows what comes of it.
    virtual void checkForUpdates() = 0;
};

class Updaters {
public:
    virtual ~Updaters() = default;

    /// An updater that has not started. The delegate outlives it.
    virtual std::unique_ptr<Updater> makeUpdater(Updater::Delegate&) = 0;
};

} // namespace quillox
