#include "platform/linux/update/VersionFolders.h"

#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <system_error>

namespace quillox {

namespace fs = std::filesystem;

namespace {

    constexpr std::size_t largestNotes = 65536;

    std::string failureOf(const std::string& path)
    {
        return fmt::format("{}: {}", path, std::generic_category().message(errno));
    }

} // namespace

bool syncFolder(const std::string& path)
{
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // EINVAL: a file system that has nothing to flush.
    return folder && (::fsync(folder.get()) == 0 || errno == EINVAL);
}

std::string VersionFolders::folderOf(Version version) const
{
    return fmt::format("{}/{}", versionsFolder(), version.text());
}

std::string VersionFolders::programOf(Version version) const
{
    return fmt::format("{}/{}", folderOf(version), programName);
}

std::optional<Version> VersionFolders::current() const
{
    std::error_code error;
    const auto target = fs::read_symlink(m_root + "/current", error);
    return error ? std::nullopt : Version::parse(target.filename().string());
}

bool VersionFolders::hasVersion(Version version) const
{
    return ::access(programOf(version).c_str(), X_OK) == 0;
}

std::vector<Version> VersionFolders::versions() const
{
    std::vector<Version> found;
    std::error_code error;
    for (fs::directory_iterator entry(versionsFolder(), error), end; !error && entry != end;
         entry.increment(error)) {
        if (const auto version = Version::parse(entry->path().filename().string()))
            found.push_back(*version);
    }
    std::ranges::sort(found, std::greater<>());
    return found;
}

std::string VersionFolders::notes() const
{
    return readFile(notesPath(), largestNotes).text.value_or("");
}

VersionFolders::Failure VersionFolders::writeNotes(const std::string& text) const
{
    if (const auto made = makeDirectories(updateFolder()); !made)
        return made.reason;
    const auto written = replaceFile(notesPath(), text);
    return written ? Failure() : Failure(written.reason);
}

VersionFolders::Failure VersionFolders::makeCurrent(Version version) const
{
    const auto link = m_root + "/current";
    const auto next = m_root + "/.current-next";
    const auto target = fmt::format("versions/{}", version.text());
    ::unlink(next.c_str());
    if (::symlink(target.c_str(), next.c_str()) != 0 || ::rename(next.c_str(), link.c_str()) != 0
        || !syncFolder(m_root))
        return failureOf(link);
    return std::nullopt;
}

std::optional<std::string> VersionFolders::makeStagingFolder() const
{
    auto staging = versionsFolder() + "/.staging";
    std::error_code error;
    fs::remove_all(staging, error);
    fs::remove_all(versionsFolder() + "/.discarded", error);
    return ::mkdir(staging.c_str(), S_IRWXU | S_IRGRP | S_IXGRP | S_IROTH | S_IXOTH) == 0
        ? std::optional(std::move(staging))
        : std::nullopt;
}

VersionFolders::Failure VersionFolders::adoptStagingFolder(Version version) const
{
    const auto staging = versionsFolder() + "/.staging";
    const auto discarded = versionsFolder() + "/.discarded";
    const auto target = folderOf(version);
    if (!syncFolder(staging))
        return failureOf(staging);
    if (::rename(target.c_str(), discarded.c_str()) != 0 && errno != ENOENT)
        return failureOf(target);
    if (::rename(staging.c_str(), target.c_str()) != 0 || !syncFolder(versionsFolder()))
        return failureOf(target);
    std::error_code error;
    fs::remove_all(discarded, error);
    return std::nullopt;
}

void VersionFolders::remove(Version version) const
{
    // Under another name first: what is half removed must not pass for a version.
    const auto discarded = versionsFolder() + "/.discarded";
    std::error_code error;
    fs::remove_all(discarded, error);
    if (::rename(folderOf(version).c_str(), discarded.c_str()) == 0)
        fs::remove_all(discarded, error);
}

} // namespace quillox
