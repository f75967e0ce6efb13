#pragma once

#include "support/Handle.h"
#include "support/Version.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// The folder in which the application lives, with a folder for each of its versions. Main thread
/// only. Whatever kills the process, or the machine, at any moment leaves one whole version
/// current.
class Installation {
public:
    /// None for success, else why it failed: a clause for the log, without its full stop.
    using Failure = std::optional<std::string>;

    virtual ~Installation() = default;

    virtual Version runningVersion() const = 0;

    /// Whether that version is here, whole.
    virtual bool hasVersion(Version) const = 0;

    /// What was written last, which outlives this process; empty when nothing was.
    virtual std::string notes() const = 0;

    /// Returns when they are on the disk.
    virtual Failure writeNotes(const std::string&) = 0;

    /// Where an archive with that SHA-256 is to be put. Others that were put there go away, all of
    /// them when it is empty.
    virtual std::string archivePath(const std::string& sha256) = 0;

    /// Unpacks an archive into the folder of that version, as a whole or not at all, on another
    /// thread. Only plain files and folders are unpacked; an archive with anything else, or with a
    /// name that leads elsewhere, fails. Afterwards the archive is gone. The answer comes once,
    /// and not when the handle has gone.
    [[nodiscard]] virtual Handle stage(
        const std::string& archive, Version, std::function<void(Failure)> onDone)
        = 0;

    /// From the next start on that version runs. Returns when this is on the disk.
    virtual Failure makeCurrent(Version) = 0;

    /// Removes every other version but the running and the current one, by and by.
    virtual void keepOnly(const std::vector<Version>&) = 0;
};

} // namespace quillox
