#pragma once

#include "app/CommandLine.h"
#include "app/SessionSetup.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace quillox {

/// `quillox setup-session`: has the machine log a user in by itself, to a session with nothing but
/// this program, or takes that back. What is to change stands on `out` before it changes; what goes
/// wrong is a line on `err`.
class SetupSessionCommand {
public:
    struct Machine {
        MachineFiles& files;
        std::ostream& out;
        std::ostream& err;
    };

    explicit SetupSessionCommand(Machine);

    /// The program's exit code.
    int run(const SetupSessionRequest&);

private:
    int setUp(const SetupSessionRequest&);
    int undo(const SetupSessionRequest&);
    /// What keeps this machine from such a session; empty when nothing does.
    std::string obstacle(const DisplayManager&, DedicatedSession) const;
    std::vector<ManagedFile> filesOf(DisplayManager::Kind, const std::string& user) const;

    void add(FilePlan, const std::string& path);
    int carryOut(const SetupSessionRequest&, const std::string& heading, const std::string& ending);
    int fail(int exitCode, const std::string& line);

    Machine m_machine;
    std::vector<FileChange> m_changes;
    /// Files that only root can read.
    std::vector<std::string> m_hidden;
    std::vector<std::string> m_objections;
};

} // namespace quillox
