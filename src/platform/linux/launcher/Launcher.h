#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/update/VersionFolders.h"
#include "resilience/update/UpdateTrial.h"

#include <chrono>
#include <sys/types.h>

namespace quillox {

class NotifyRelay;
class SystemLog;

/// Starts the current version of an installation that maintains itself, in the place of this
/// process. One that is on trial is started beside it instead and watched, until it has shown that
/// it works or is rolled back. Links no library but the system's own.
class Launcher {
public:
    /// A version on trial that starts the launcher anew ends with this code instead, so that the
    /// one that watches it goes on.
    static constexpr int exitAgain = 85;

    /// The log outlives this.
    Launcher(
        VersionFolders, SystemLog&, std::chrono::milliseconds patience = UpdateTrial::patience);

    /// `argv` are this process's own arguments, with an end of null. Returns only an exit code for
    /// this process; where a version on trial died of a signal, this process does, too.
    int run(char** argv);

private:
    struct End {
        int status = 0; ///< As the kernel gives it.
        bool isWished = false; ///< This process was asked to end, and passed that on.
        bool isSilent = false;
    };

    bool mayWatch(char** argv);
    UpdateNotes notes() const;
    void rollBack(const UpdateNotes&);
    bool watch(char** argv, const UpdateNotes& before, int& exitCode);
    bool isToGoOn(const End&, int& exitCode);
    static pid_t startBeside(const std::string& program, char** argv, const NotifyRelay&);
    End waitFor(pid_t, const NotifyRelay&) const;
    int execute(char** argv) const;

    VersionFolders m_folders;
    SystemLog& m_log;
    std::chrono::milliseconds m_patience;
    FileDescriptor m_lock;
    std::optional<UpdateNotes::Trial> m_lastTrial; ///< That was started here.
    bool m_hasGivenUp = false;
};

} // namespace quillox
