#include "platform/linux/system/AtomicFile.h"

#include "platform/linux/system/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <ostream>
#include <streambuf>
#include <system_error>

namespace quillox {

namespace {

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

    /// Writes to a file that is open, in large pieces. After a failure `errno` tells why.
    class DescriptorBuffer final : public std::streambuf {
    public:
        explicit DescriptorBuffer(int descriptor)
            : m_descriptor(descriptor)
        {
            setp(m_block.data(), m_block.data() + m_block.size());
        }

    protected:
        int_type overflow(int_type next) override
        {
            if (sync() != 0)
                return traits_type::eof();
            return traits_type::eq_int_type(next, traits_type::eof())
                ? traits_type::not_eof(next)
                : sputc(traits_type::to_char_type(next));
        }

        int sync() override
        {
            for (const char* next = pbase(); next < pptr();) {
                const auto written
                    = ::write(m_descriptor, next, static_cast<std::size_t>(pptr() - next));
                if (written < 0 && errno == EINTR)
                    continue;
                if (written < 0)
                    return -1;
                next += written;
            }
            setp(m_block.data(), m_block.data() + m_block.size());
            return 0;
        }

    private:
        int m_descriptor;
        std::array<char, 65536> m_block;
    };

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

        bool write(const std::function<void(std::ostream&)>& producer)
        {
            DescriptorBuffer buffer(m_file.get());
            std::ostream stream(&buffer);
            producer(stream);
            stream.flush();
            return stream.good() && ::fsync(m_file.get()) == 0;
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

    FileResult replace(const std::string& path, FilePermissions permissions,
        const std::function<void(std::ostream&)>& write)
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
            || ::fchmod(temporary.descriptor(), mode) != 0 || !temporary.write(write)
            || !temporary.moveTo(target) || !syncDirectory(directoryOf(target)))
            return { describe(target, errno) };
        return {};
    }

    std::string timeForName()
    {
        const auto now = std::time(nullptr);
        std::tm parts {};
        ::localtime_r(&now, &parts);
        char text[32];
        return std::string(text, std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &parts));
    }

    /// Fails with EEXIST when the new name is taken.
    bool renameToUnused(const std::string& from, const std::string& to)
    {
        if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
            return true;
        if (errno != EINVAL)
            return false;
        // A file system without that operation: making a second name never replaces anything.
        return ::link(from.c_str(), to.c_str()) == 0 && ::unlink(from.c_str()) == 0;
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

FileContents readFile(const std::string& path, std::size_t largest)
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
    text.reserve(std::min(static_cast<std::size_t>(status.st_size), largest) + 1);
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
        if (text.size() > largest)
            return { {}, false, fmt::format("{}: larger than {} MiB", path, largest >> 20) };
    }
}

FileResult replaceFile(
    const std::string& path, std::string_view contents, FilePermissions permissions)
{
    return replace(path, permissions, [contents](std::ostream& out) { out << contents; });
}

FileResult replaceFile(const std::string& path, const std::function<void(std::ostream&)>& write)
{
    return replace(path, FilePermissions::kept, write);
}

FileResult setFileAside(const std::string& path, std::string& newName)
{
    const auto file = resolvedPath(path);
    const auto base = fmt::format("{}.damaged-{}", file, timeForName());
    constexpr int mostPerSecond = 1000;
    for (int attempt = 1; attempt <= mostPerSecond; ++attempt) {
        newName = attempt == 1 ? base : fmt::format("{}-{}", base, attempt);
        if (renameToUnused(file, newName))
            return {};
        if (errno != EEXIST)
            break;
    }
    return { describe(base, errno) };
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
