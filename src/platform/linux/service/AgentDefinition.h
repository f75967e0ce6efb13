#pragma once

#include "platform/linux/service/AgentPlaces.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// What the application's resources say of an agent as a unit of systemd.
struct UnitDefinition {
    /// Where a package installed the complete unit; empty when none did.
    std::string installedFile;
    /// Otherwise the unit's text, with the program to start.
    std::string text;
    /// Why there is neither, without a full stop.
    std::string reason;
};

/// Looks beside the executable: as a package installs it, in `../share/quillox`, in `resources`,
/// and as it is built.
UnitDefinition findUnitDefinition(const AgentPlaces&, const std::string& unit);

/// `definition` with `executable` in the place that it leaves for it, and marked as written by the
/// application; none when the path has characters that units cannot name.
std::optional<std::string> unitText(std::string_view definition, const std::string& executable);

/// Whether a unit's text has that mark.
bool isWrittenHere(std::string_view unitText);

/// An entry for the autostart folder that starts the executable with `--keep-alive`; none when some
/// desktop could not start what has that path.
std::optional<std::string> autostartEntry(const std::string& executable);

/// Whether an entry's text says that it is to be started. The desktop's own settings may say no.
bool isSwitchedOn(const std::string& autostartEntry);

} // namespace quillox
