#pragma once

#include <string>

namespace quillox {

/// Where agents are looked for and registered. All paths are absolute.
struct AgentPlaces {
    /// Of the application; the definitions lie beside it.
    std::string executable;
    std::string configFolder; ///< Of this user, for example "/home/kiosk/.config".
    std::string runtimeFolder; ///< With the sockets of this user's services.
    /// What starts the executable, or a newer version of it; empty where nothing does.
    std::string launcher {};

    /// Make it early: an update may put another file in the place of this process's executable.
    static AgentPlaces ofThisProcess();

    /// The launcher of an installation that maintains itself; empty for another one.
    static std::string launcherOf(const std::string& executable);

    /// What an agent starts.
    const std::string& program() const { return launcher.empty() ? executable : launcher; }
};

} // namespace quillox
