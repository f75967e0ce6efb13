#include "platform/linux/system/SiteFilesLinux.h"

#include "platform/linux/system/FileDescriptor.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>

namespace quillox {

namespace {

    class OpenSiteFile final : public SiteFile {
    public:
        OpenSiteFile(FileDescriptor descriptor, std::uint64_t size)
            : m_descriptor(std::move(descriptor))
            , m_size(size)
        {
        }

        std::uint64_t size() const override { return m_size; }

        std::optional<std::size_t> read(
            std::uint64_t offset, std::span<std::byte> buffer) const override
        {
            ssize_t count = 0;
            do
                count = ::pread(
                    m_descriptor.get(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
            while (count < 0 && errno == EINTR);
            return count < 0 ? std::nullopt : std::optional(static_cast<std::size_t>(count));
        }

    private:
        FileDescriptor m_descriptor;
        std::uint64_t m_size;
    };

    /// Something below a root, found but not opened; or why there is none.
    struct Found {
        FileDescriptor item;
        int error = 0;
    };

    Found findBeneath(const FileDescriptor& root, const std::string& name)
    {
        open_how how {};
        how.flags = O_PATH | O_CLOEXEC;
        how.resolve = RESOLVE_BENEATH | RESOLVE_NO_MAGICLINKS;
        const auto* const path = name.empty() ? "." : name.c_str();
        const auto descriptor = ::syscall(SYS_openat2, root.get(), path, &how, sizeof how);
        if (descriptor < 0)
            return { {}, errno };
        return { FileDescriptor(static_cast<int>(descriptor)), 0 };
    }

    /// The name of the same thing without links; outside the root it begins with "..".
    std::optional<std::string> nameWithoutLinks(const std::string& root, const std::string& name)
    {
        std::error_code error;
        const auto folder = std::filesystem::canonical(root, error);
        if (error)
            return std::nullopt;
        const auto target = std::filesystem::canonical(folder / name, error);
        if (error)
            return std::nullopt;
        return target.lexically_relative(folder).string();
    }

    Found find(const std::string& root, const std::string& name)
    {
        const FileDescriptor folder(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!folder)
            return { {}, errno };
        auto found = findBeneath(folder, name);
        // For the kernel a link with an absolute target leads out, even one that comes back in.
        if (found.error == EXDEV) {
            if (const auto plain = nameWithoutLinks(root, name))
                return findBeneath(folder, *plain);
        }
        return found;
    }

} // namespace

SiteFiles::Kind SiteFilesLinux::kind(const std::string& root, const std::string& name) const
{
    const auto found = find(root, name);
    if (found.error == EXDEV)
        return Kind::Other;
    struct stat status { };
    if (!found.item || ::fstat(found.item.get(), &status) != 0)
        return Kind::Missing;
    return S_ISDIR(status.st_mode) ? Kind::Directory : Kind::Other;
}

std::unique_ptr<SiteFile> SiteFilesLinux::open(
    const std::string& root, const std::string& name) const
{
    const auto found = find(root, name);
    struct stat status { };
    if (!found.item || ::fstat(found.item.get(), &status) != 0 || !S_ISREG(status.st_mode))
        return nullptr;
    const auto itself = "/proc/self/fd/" + std::to_string(found.item.get());
    FileDescriptor file(::open(itself.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    if (!file)
        return nullptr;
    return std::make_unique<OpenSiteFile>(
        std::move(file), static_cast<std::uint64_t>(status.st_size));
}

} // namespace quillox
