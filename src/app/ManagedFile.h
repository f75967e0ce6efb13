#pragma once

#include "app/CommandLine.h"
#include "app/FileChanges.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

using DedicatedSession = SetupSessionRequest::Session;

/// A file in which the automatic login stands.
struct ManagedFile {
    std::string path;
    /// Where the bytes of an earlier file are kept; empty for a file that is this program's alone.
    std::string kept {};
    /// What is to stand in it, from what stood there without the automatic login. Empty when there
    /// need not be such a file.
    std::function<std::string(std::string_view earlier, DedicatedSession)> wanted;
    unsigned modeWhenNew = 0644;
};

/// What becomes of one file, in steps; or why that is left to people, in one line.
struct FilePlan {
    std::vector<FileChange> changes {};
    std::string objection {};
    /// Only root can tell what becomes of it.
    bool isHidden = false;
};

/// For the session. Nothing to do when all is as wanted. A file that was changed since it was first
/// set up is objected to.
FilePlan planToSetUp(const ManagedFile&, DedicatedSession, const MachineFiles&);

/// Back to the bytes before. A file that was changed since is objected to.
FilePlan planToUndo(const ManagedFile&, const MachineFiles&);

} // namespace quillox
