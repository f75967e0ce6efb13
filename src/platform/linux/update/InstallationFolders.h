#pragma once

#include "platform/linux/update/VersionFolders.h"
#include "ports/Installation.h"

#include <atomic>

namespace quillox {

class RunLoop;

/// An installation in a folder of the user's own, as `VersionFolders` describes it.
class InstallationFolders final : public Installation {
public:
    struct Place {
        std::string root;
        Version version;
    };

    /// Where a program with that absolute path, links resolved, is one version of such an
    /// installation; none when it is not, or when this user must not change it.
    static std::optional<Place> find(const std::string& executable);

    /// The loop outlives this.
    InstallationFolders(Place, RunLoop&);

    const VersionFolders& folders() const { return m_folders; }

    Version runningVersion() const override { return m_running; }
    bool hasVersion(Version version) const override { return m_folders.hasVersion(version); }
    std::string notes() const override { return m_folders.notes(); }
    Failure writeNotes(const std::string& notes) override { return m_folders.writeNotes(notes); }
    std::string archivePath(const std::string& sha256) override;
    Handle stage(const std::string& archive, Version, std::function<void(Failure)> onDone) override;
    Failure makeCurrent(Version version) override { return m_folders.makeCurrent(version); }
    void keepOnly(const std::vector<Version>&) override;

private:
    VersionFolders m_folders;
    Version m_running;
    RunLoop& m_runLoop;
    Handle m_removal;
};

/// Makes a whole version out of an archive. Any thread.
VersionFolders::Failure stageArchive(const VersionFolders&, const std::string& archive, Version,
    const std::atomic<bool>& isCancelled);

} // namespace quillox
