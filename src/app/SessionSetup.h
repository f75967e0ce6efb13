#pragma once

#include "app/ManagedFile.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillox {

/// What logs somebody in when the machine starts, as far as this program knows it.
struct DisplayManager {
    enum class Kind { LightDM, Gdm, Sddm, Greetd };

    Kind kind;
    std::string_view name;
    std::string_view program;
    /// Units by which the system's link names it.
    std::vector<std::string_view> units;
    /// What comes when the session ends, in a sentence.
    std::string_view afterSession;
};

const std::vector<DisplayManager>& displayManagers();

/// One of the package's two sessions.
struct DedicatedSessionEntry {
    /// As display managers name it.
    std::string_view name;
    std::string_view path;
    /// Programs without which it does not start, and the packages that bring them.
    std::vector<std::pair<std::string_view, std::string_view>> needs;
};

const DedicatedSessionEntry& entryOf(DedicatedSession);

/// The display manager that starts with the machine; none, and why, when there is none that this
/// program knows or it cannot be told which.
const DisplayManager* activeDisplayManager(const MachineFiles&, std::string& reason);

/// The display manager's files in the order in which they are to be written. `commands` start the
/// sessions, in the order of `DedicatedSession`.
std::vector<ManagedFile> managedFiles(
    DisplayManager::Kind, const std::string& user, const std::vector<std::string>& commands);

/// That of the X server.
ManagedFile managedServerFile();

} // namespace quillox
