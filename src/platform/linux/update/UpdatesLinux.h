#pragma once

#include "platform/linux/update/InstallationFolders.h"
#include "resilience/update/SelfUpdater.h"
#include "resilience/update/UpdateHealth.h"

#include <memory>
#include <optional>
#include <string>

namespace quillox {

/// The updates of a copy of the application that lies in a folder of its user's own. Main thread
/// only.
class UpdatesLinux {
public:
    struct Surroundings {
        RunLoop& runLoop;
        Dialogs& dialogs;
        UpdateProgressPanels& progressPanels;
        Workspace& workspace;
        SystemLog& log;
    };

    /// None for a copy that does not maintain itself: one of a package, of another user, or of a
    /// build. `executable` is this process's, links resolved, as it was at its start. What
    /// surrounds the updates outlives them, and they the updater.
    static std::unique_ptr<UpdatesLinux> find(const std::string& executable, Surroundings);
    ~UpdatesLinux();

    /// Without a usable property file beside the program: ones that say so and do nothing.
    Updaters& updaters() { return *m_updaters; }

    UpdateHealth& health() { return m_health; }

    /// What to start instead of the executable, so that a new version is watched.
    std::string launcher() const { return m_installation.folders().launcher(); }

private:
    UpdatesLinux(InstallationFolders::Place, Surroundings);
    std::unique_ptr<Updaters> makeUpdaters(Surroundings);

    InstallationFolders m_installation;
    UpdateHealth m_health;
    std::unique_ptr<UpdateFeed> m_feed;
    std::unique_ptr<SignatureCheck> m_signatures;
    std::unique_ptr<Updaters> m_updaters;
};

} // namespace quillox
