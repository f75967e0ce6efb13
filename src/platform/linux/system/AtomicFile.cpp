#include "platform/linux/system/AtomicFile.h"

#include "platform/linux/system/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace quillox {

namespace {

    constexpr std::size_t largestFile = 16u << 20;
    constexpr std::string_view temporarySuffix = ".new-";

    std::string describe(const std::string& path, int error)
    {
        return fmt::format("{}: {}", path, std::generic_category().message(error));
    }

    std::string directoryOf(const std::string& path)
    {
        const auto parent = std::filesystem::path(path).parent_path().string();
        return parent.empty() ? "." : parent;
    }

    std::string temporaryPrefix(const std::string& path)
    {
        return fmt::format(
            ".{}{}", std::filesystem::path(path).filename().string(), temporarySuffix);
    }

    /// A file under a name of its own that disappears again unless it is moved to its place.
    class TemporaryFile {
    public:
        explicit TemporaryFile(const std::string& target)
            : m_path(fmt::format("{}/{}XXXXXX", directoryOf(target), temporaryPrefix(target)))
            , m_file(::mkostemp(m_path.data(), O_CLOEXEC))
        {
        }
        TemporaryFile(const TemporaryFile&) = delete;
        TemporaryFile& operator=(const TemporaryFile&) = delete;
        ~TemporaryFile()
        {
            if (m_file && !m_isMoved)
                ::unlink(m_path.c_str());
        }

        int descriptor() const { return m_file.get(); }

        bool write(std::string_view contents)
        {
            while (!contents.empty()) {
                const auto written = ::write(m_file.get(), contents.data(), contents.size());
                if (written < 0 && errno == EINTR)
                    continue;
                if (written < 0)
                    return false;
                contents.remove_prefix(static_cast<std::size_t>(written));
            }
            return ::fsync(m_file.get()) == 0;
        }

        bool moveTo(const std::string& target)
        {
            m_isMoved = ::rename(m_path.c_str(), target.c_str()) == 0;
            return m_isMoved;
        }

    private:
        std::string m_path;
        FileDescriptor m_file;
        bool m_isMoved = false;
    };

    /// Some file systems cannot flush a directory and say EINVAL; they have nothing to flush.
    bool syncDirectory(const std::string& path)
    {
        const FileDescriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        return directory && (::fsync(directory.get()) == 0 || errno == EINVAL);
    }

    bool keepOwnership(int descriptor, const struct stat& original)
    {
        return ::geteuid() != 0 || ::fchown(descriptor, original.st_uid, original.st_gid) == 0;
    }

} // namespace

std::string resolvedPath(const std::string& path)
{
    namespace fs = std::filesystem;
    fs::path resolved = path;
    constexpr int longestChain = 40;
    for (int link = 0; link < longestChain; ++link) {
        std::error_code error;
        const auto target = fs::read_symlink(resolved, error);
        if (error)
            break;
        resolved = resolved.parent_path() / target;
    }
    return resolved.string();
}

FileContents readFile(const std::string& path)
{
    // Not to block on a pipe that stands where a file is expected.
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status { };
    if (!file || ::fstat(file.get(), &status) != 0) {
        const auto isMissing = errno == ENOENT || errno == ENOTDIR;
        return { {}, isMissing, describe(path, errno) };
    }
    if (!S_ISREG(status.st_mode))
        return { {}, false, path + ": not a regular file" };
    std::string text;
    std::array<char, 16384> block;
    for (;;) {
        const auto count = ::read(file.get(), block.data(), block.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return { {}, false, describe(path, errno) };
        if (count == 0)
            return { std::move(text), false, {} };
        text.append(block.data(), static_cast<std::size_t>(count));
        if (text.size() > largestFile)
            return { {}, false, path + ": larger than 16 MiB" };
    }
}

FileResult replaceFile(
    const std::string& path, std::string_view contents, FilePermissions permissions)
{
    const auto target = resolvedPath(path);
    struct stat original { };
    const auto exists = ::lstat(target.c_str(), &original) == 0;
    if (!exists && errno != ENOENT)
        return { describe(target, errno) };
    if (exists && !S_ISREG(original.st_mode))
        return { target + ": not a regular file" };
    const auto mode = exists && permissions == FilePermissions::kept ? original.st_mode & 07777
                                                                     : S_IRUSR | S_IWUSR;

    TemporaryFile temporary(target);
    if (temporary.descriptor() < 0)
        return { describe(target, errno) };
    // The mode comes after the owner, because changing that clears some of its bits.
    if ((exists && !keepOwnership(temporary.descriptor(), original))
        || ::fchmod(temporary.descriptor(), mode) != 0 || !temporary.write(contents)
        || !temporary.moveTo(target) || !syncDirectory(directoryOf(target)))
        return { describe(target, errno) };
    return {};
}

void removeUnfinishedReplacements(const std::string& path)
{
    namespace fs = std::filesystem;
    const auto target = resolvedPath(path);
    const auto prefix = temporaryPrefix(target);
    std::error_code error;
    for (fs::directory_iterator entry(directoryOf(target), error), end; !error && entry != end;
         entry.increment(error)) {
        if (entry->path().filename().string().starts_with(prefix))
            ::unlink(entry->path().c_str());
    }
}

FileResult makeDirectories(const std::string& path)
{
    struct stat status { };
    if (::stat(path.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? FileResult {} : FileResult { describe(path, ENOTDIR) };
    const auto parent = directoryOf(path);
    if (parent != path) {
        if (auto made = makeDirectories(parent); !made)
            return made;
    }
    // Another process may have been quicker.
    if ((::mkdir(path.c_str(), S_IRWXU) != 0 && errno != EEXIST) || !syncDirectory(parent))
        return { describe(path, errno) };
    return {};
}

} // namespace quillox
