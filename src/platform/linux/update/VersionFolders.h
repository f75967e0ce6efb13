#pragma once

#include "support/Version.h"

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// The files of an installation that maintains itself:
///
///     quillox              the launcher, which is never exchanged
///     current              a link to versions/1.2.0
///     versions/1.2.0/      quillox, libquillox-*.so, web-extensions/, resources/update.properties
///     update/              notes, archives that are fetched, the launcher's lock
///
/// Everything waits for the disk. Failures are clauses for the log, without their full stop.
class VersionFolders {
public:
    using Failure = std::optional<std::string>;

    static constexpr auto programName = "quillox";

    /// `root` is absolute.
    explicit VersionFolders(std::string root)
        : m_root(std::move(root))
    {
    }

    const std::string& root() const { return m_root; }
    std::string launcher() const { return m_root + "/" + programName; }
    std::string updateFolder() const { return m_root + "/update"; }
    std::string notesPath() const { return updateFolder() + "/notes"; }
    std::string lockPath() const { return updateFolder() + "/lock"; }
    std::string versionsFolder() const { return m_root + "/versions"; }
    std::string folderOf(Version) const;
    std::string programOf(Version) const;

    std::optional<Version> current() const;
    bool hasVersion(Version) const;
    std::vector<Version> versions() const; ///< The newest first.

    std::string notes() const;
    Failure writeNotes(const std::string&) const;

    /// Exchanges the link as a whole.
    Failure makeCurrent(Version) const;

    /// An empty folder for a version that is not whole yet; what an earlier attempt left is
    /// removed. None when it cannot be made.
    std::optional<std::string> makeStagingFolder() const;

    /// Gives the staging folder its name. All its contents must be on the disk.
    Failure adoptStagingFolder(Version) const;

    void remove(Version) const;

private:
    std::string m_root;
};

/// What is in a folder, and its name, are on the disk when this returns true.
bool syncFolder(const std::string& path);

} // namespace quillox
