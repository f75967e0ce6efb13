#include "platform/linux/system/MachineFilesLinux.h"

#include "platform/linux/system/AtomicFile.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace quillox {

namespace {

    namespace fs = std::filesystem;

    std::string describe(const std::string& path, int error)
    {
        return fmt::format("{}: {}", path, std::generic_category().message(error));
    }

    /// With a mode of their own, whatever this process's mask: every reader of the files in them
    /// passes through.
    int makeFolders(const fs::path& path)
    {
        std::error_code error;
        if (fs::is_directory(path, error))
            return 0;
        if (const int failure = makeFolders(path.parent_path()))
            return failure;
        constexpr mode_t mode = 0755;
        return ::mkdir(path.c_str(), mode) == 0 && ::chmod(path.c_str(), mode) == 0 ? 0 : errno;
    }

    /// The mode comes after the owner, because changing that clears some of its bits.
    int dress(const std::string& path, mode_t mode, const struct stat* model)
    {
        if (model && ::geteuid() == 0 && ::chown(path.c_str(), model->st_uid, model->st_gid) != 0)
            return errno;
        constexpr mode_t permissions = 07777;
        return ::chmod(path.c_str(), model ? model->st_mode & permissions : mode) == 0 ? 0 : errno;
    }

} // namespace

MachineFilesLinux::MachineFilesLinux(std::string root)
    : m_root(std::move(root))
{
}

MachineFiles::Contents MachineFilesLinux::read(const std::string& path) const
{
    auto file = readFile(m_root + path);
    return { std::move(file.text), file.isMissing ? std::string() : std::move(file.reason) };
}

bool MachineFilesLinux::exists(const std::string& path) const
{
    return ::access((m_root + path).c_str(), F_OK) == 0;
}

std::optional<std::string> MachineFilesLinux::linkTarget(const std::string& path) const
{
    std::error_code error;
    auto target = fs::read_symlink(m_root + path, error);
    return error ? std::nullopt : std::optional(target.string());
}

std::string MachineFilesLinux::write(
    const std::string& path, std::string_view text, const Attributes& attributes)
{
    const auto real = m_root + path;
    struct stat status { };
    const bool isNew = ::stat(real.c_str(), &status) != 0;
    const bool isCopy = isNew && !attributes.sameAs.empty();
    if (isCopy && ::stat((m_root + attributes.sameAs).c_str(), &status) != 0)
        return describe(attributes.sameAs, errno);
    if (const int error = isNew ? makeFolders(fs::path(real).parent_path()) : 0)
        return describe(path, error);
    if (auto result = replaceFile(real, text); !result)
        return std::move(result.reason);
    // Until then it is its owner's alone.
    const int error = isNew ? dress(real, attributes.mode, isCopy ? &status : nullptr) : 0;
    if (error == 0)
        return {};
    ::unlink(real.c_str());
    return describe(path, error);
}

std::string MachineFilesLinux::remove(const std::string& path)
{
    return ::unlink((m_root + path).c_str()) == 0 ? std::string() : describe(path, errno);
}

std::optional<unsigned> MachineFilesLinux::userNumber(const std::string& name) const
{
    std::array<char, 16384> buffer;
    passwd entry {};
    passwd* found = nullptr;
    if (::getpwnam_r(name.c_str(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return std::nullopt;
    return entry.pw_name == name ? std::optional<unsigned>(entry.pw_uid) : std::nullopt;
}

bool MachineFilesLinux::isRoot() const
{
    return ::geteuid() == 0;
}

} // namespace quillox
