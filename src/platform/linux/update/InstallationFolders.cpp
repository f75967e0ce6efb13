#include "platform/linux/update/InstallationFolders.h"

#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/update/UpdateParts.h"
#include "platform/linux/update/WorkerJob.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quillox {

namespace fs = std::filesystem;

namespace {

    constexpr auto archiveSuffix = ".archive";

    bool mayChange(const std::string& folder)
    {
        return ::access(folder.c_str(), R_OK | W_OK | X_OK) == 0;
    }

} // namespace

std::optional<InstallationFolders::Place> InstallationFolders::find(const std::string& executable)
{
    const fs::path program = executable;
    const auto folder = program.parent_path();
    const auto version = Version::parse(folder.filename().string());
    const VersionFolders folders(folder.parent_path().parent_path().string());
    if (!version || folders.programOf(*version) != executable
        || ::access(folders.launcher().c_str(), X_OK) != 0 || !mayChange(folders.root())
        || !mayChange(folders.versionsFolder()))
        return std::nullopt;
    return Place { folders.root(), *version };
}

InstallationFolders::InstallationFolders(Place place, RunLoop& runLoop)
    : m_folders(std::move(place.root))
    , m_running(place.version)
    , m_runLoop(runLoop)
{
}

std::string InstallationFolders::archivePath(const std::string& sha256)
{
    const auto folder = m_folders.updateFolder();
    makeDirectories(folder); // Where that fails, so does what follows, with a reason.
    const auto name = sha256 + archiveSuffix;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().extension() == archiveSuffix && entry->path().filename() != name)
            ::unlink(entry->path().c_str());
    }
    return folder + "/" + name;
}

Handle InstallationFolders::stage(
    const std::string& archive, Version version, std::function<void(Failure)> onDone)
{
    return runOnThread<Failure>(
        m_runLoop,
        [folders = m_folders, archive, version](const std::atomic<bool>& isCancelled) {
            return stageArchive(folders, archive, version, isCancelled);
        },
        std::move(onDone));
}

void InstallationFolders::keepOnly(const std::vector<Version>& kept)
{
    auto superfluous = m_folders.versions();
    std::erase_if(superfluous, [&](Version version) {
        return version == m_running || version == m_folders.current()
            || std::ranges::count(kept, version) > 0;
    });
    m_removal = runOnThread<bool>(
        m_runLoop,
        [folders = m_folders, superfluous](const std::atomic<bool>& isCancelled) {
            for (const auto version : superfluous) {
                if (!isCancelled)
                    folders.remove(version);
            }
            return true;
        },
        [](bool) {});
}

VersionFolders::Failure stageArchive(const VersionFolders& folders, const std::string& archive,
    Version version, const std::atomic<bool>& isCancelled)
{
    const auto staging = folders.makeStagingFolder();
    if (!staging)
        return "there is no place to unpack it";
    const auto& [parts, absence] = updateParts();
    if (!parts)
        return absence;
    if (auto failure = parts->unpack(archive, *staging, isCancelled))
        return failure;
    const auto program = *staging + "/" + VersionFolders::programName;
    if (::access(program.c_str(), X_OK) != 0)
        return "the archive holds no program";
    if (auto failure = folders.adoptStagingFolder(version))
        return failure;
    ::unlink(archive.c_str());
    return std::nullopt;
}

} // namespace quillox
