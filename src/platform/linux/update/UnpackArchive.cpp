#include "platform/linux/update/UnpackArchive.h"

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/update/VersionFolders.h"

#include <archive.h>
#include <archive_entry.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fmt/format.h>
#include <memory>
#include <system_error>

namespace quillox {

namespace {

    namespace fs = std::filesystem;
    using Failure = std::optional<std::string>;

    constexpr std::uint64_t largestContents = std::uint64_t { 2 } << 30;
    constexpr unsigned mostEntries = 20'000;
    constexpr std::size_t readAtOnce = 65536;

    struct ArchiveFree {
        void operator()(struct archive* archive) const { archive_read_free(archive); }
    };
    using ArchiveOwner = std::unique_ptr<struct archive, ArchiveFree>;

    ArchiveOwner open(const std::string& path)
    {
        ArchiveOwner archive(archive_read_new());
        const bool isOpen = archive && archive_read_support_filter_gzip(archive.get()) == ARCHIVE_OK
            && archive_read_support_format_tar(archive.get()) == ARCHIVE_OK
            && archive_read_open_filename(archive.get(), path.c_str(), readAtOnce) == ARCHIVE_OK;
        return isOpen ? std::move(archive) : nullptr;
    }

    /// Empty for the folder itself; none for a name that is not plainly below it.
    std::optional<std::string> nameBelow(const char* written)
    {
        const fs::path path = written ? written : "";
        if (path.empty() || path.is_absolute())
            return std::nullopt;
        fs::path below;
        for (const auto& part : path) {
            if (part == "..")
                return std::nullopt;
            if (part != "." && !part.empty())
                below /= part;
        }
        return below.string();
    }

    class Unpacking {
    public:
        Unpacking(ArchiveOwner archive, const std::string& folder, const std::atomic<bool>& flag)
            : m_archive(std::move(archive))
            , m_folder(folder)
            , m_isCancelled(flag)
        {
        }

        Failure run()
        {
            struct archive_entry* entry = nullptr;
            for (unsigned count = 0; !m_isCancelled; ++count) {
                const int status = archive_read_next_header(m_archive.get(), &entry);
                if (status == ARCHIVE_EOF)
                    return syncFolders();
                if (status != ARCHIVE_OK || count == mostEntries)
                    return "the archive is damaged";
                if (auto failure = unpack(entry))
                    return failure;
            }
            return "given up";
        }

    private:
        Failure unpack(struct archive_entry* entry)
        {
            const auto name = nameBelow(archive_entry_pathname(entry));
            const auto type = archive_entry_filetype(entry);
            if (!name || archive_entry_hardlink(entry) || (type != AE_IFREG && type != AE_IFDIR))
                return "the archive holds something else than files and folders of its own";
            if (name->empty())
                return std::nullopt;
            const auto path = fmt::format("{}/{}", m_folder, *name);
            if (type == AE_IFDIR)
                return makeFolder(path);
            if (auto failure = makeFolder(fs::path(path).parent_path().string()))
                return failure;
            return writeFile(path, (archive_entry_perm(entry) & S_IXUSR) != 0);
        }

        static Failure makeFolder(const std::string& path)
        {
            std::error_code error;
            fs::create_directories(path, error);
            return error ? Failure(fmt::format("{}: {}", path, error.message())) : std::nullopt;
        }

        /// Nothing is followed and nothing replaced: the folder was empty, and holds no links.
        Failure writeFile(const std::string& path, bool isExecutable)
        {
            const mode_t mode = isExecutable ? 0755 : 0644;
            const FileDescriptor file(
                ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
            if (!file || ::fchmod(file.get(), mode) != 0)
                return failureOf(path);
            const void* block = nullptr;
            std::size_t size = 0;
            la_int64_t offset = 0;
            while (!m_isCancelled) {
                const int status = archive_read_data_block(m_archive.get(), &block, &size, &offset);
                if (status == ARCHIVE_EOF)
                    return ::fsync(file.get()) == 0 ? Failure() : failureOf(path);
                m_unpacked += size;
                if (status != ARCHIVE_OK || m_unpacked > largestContents || offset < 0
                    || static_cast<std::uint64_t>(offset) > largestContents)
                    return "the archive is damaged";
                if (!writeBlock(file.get(), static_cast<const char*>(block), size, offset))
                    return failureOf(path);
            }
            return "given up";
        }

        static bool writeBlock(int file, const char* block, std::size_t size, off_t offset)
        {
            while (size > 0) {
                const auto written = ::pwrite(file, block, size, offset);
                if (written < 0 && errno == EINTR)
                    continue;
                if (written < 0)
                    return false;
                block += written;
                size -= static_cast<std::size_t>(written);
                offset += written;
            }
            return true;
        }

        Failure syncFolders() const
        {
            std::error_code error;
            for (fs::recursive_directory_iterator entry(m_folder, error), end;
                 !error && entry != end; entry.increment(error)) {
                if (entry->is_directory(error) && !syncFolder(entry->path().string()))
                    return failureOf(entry->path().string());
            }
            return error || !syncFolder(m_folder) ? failureOf(m_folder) : Failure();
        }

        static Failure failureOf(const std::string& path)
        {
            return fmt::format("{}: {}", path, std::generic_category().message(errno));
        }

        ArchiveOwner m_archive;
        const std::string& m_folder;
        const std::atomic<bool>& m_isCancelled;
        std::uint64_t m_unpacked = 0;
    };

} // namespace

std::optional<std::string> unpackArchive(
    const std::string& archive, const std::string& folder, const std::atomic<bool>& isCancelled)
{
    auto opened = open(archive);
    if (!opened)
        return "the archive cannot be read";
    return Unpacking(std::move(opened), folder, isCancelled).run();
}

} // namespace quillox
