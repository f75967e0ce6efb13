#include "platform/linux/system/DefaultsFile.h"

#include "platform/linux/system/FileDescriptor.h"
#include "ports/SystemLog.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <fmt/format.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <thread>

namespace quillox {

namespace {

    constexpr auto lockPatience = std::chrono::seconds(5);
    constexpr auto lockPause = std::chrono::milliseconds(5);

    /// The turn of one process, or of one store in it, to change a defaults file.
    class DefaultsLock {
    public:
        explicit DefaultsLock(const std::string& file)
        {
            const std::filesystem::path path(file);
            const auto name
                = (path.parent_path() / fmt::format(".{}.lock", path.filename().string())).string();
            // Locks over the network need it writable. One that root made is only readable for the
            // user, which is enough on a local disk.
            m_file = FileDescriptor(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
            if (!m_file && errno == EACCES)
                m_file = FileDescriptor(::open(name.c_str(), O_RDONLY | O_CLOEXEC));
            const auto deadline = std::chrono::steady_clock::now() + lockPatience;
            while (m_file && ::flock(m_file.get(), LOCK_EX | LOCK_NB) != 0) {
                const auto isBusy = errno == EWOULDBLOCK || errno == EINTR;
                if (!isBusy || std::chrono::steady_clock::now() >= deadline) {
                    m_reason = isBusy ? name + ": another process does not let go of the lock"
                                      : describe(name);
                    return;
                }
                std::this_thread::sleep_for(lockPause);
            }
            if (!m_file)
                m_reason = describe(name);
        }

        /// Empty when the lock is held.
        const std::string& reason() const { return m_reason; }

    private:
        static std::string describe(const std::string& name)
        {
            return fmt::format("{}: {}", name, std::generic_category().message(errno));
        }

        FileDescriptor m_file;
        std::string m_reason;
    };

} // namespace

void OnceLog::write(const std::string& line)
{
    {
        const std::lock_guard lock(m_mutex);
        if (!m_written.insert(line).second)
            return;
    }
    m_log.write(line);
}

ProvidedDefaultsFile::ProvidedDefaultsFile(std::string path, OnceLog& log)
    : m_path(std::move(path))
    , m_log(log)
{
}

DefaultsDocument ProvidedDefaultsFile::read() const
{
    const auto file = readFile(m_path);
    if (!file.text) {
        if (!file.isMissing)
            m_log.write(fmt::format("Quillox: skipped provided defaults: {}", file.reason));
        return {};
    }
    std::string reason;
    if (auto document = DefaultsDocument::parse(*file.text, reason))
        return *std::move(document);
    m_log.write(fmt::format("Quillox: skipped provided defaults: {}: {}", m_path, reason));
    return {};
}

UserDefaultsFile::UserDefaultsFile(std::string path, OnceLog& log)
    : m_path(std::move(path))
    , m_log(log)
{
}

DefaultsDocument UserDefaultsFile::read() const
{
    auto contents = look();
    if (contents.isDamaged) {
        const DefaultsLock lock(m_path);
        // Another process may have repaired it in the meantime.
        if (lock.reason().empty())
            contents = lookAndRepair();
        else
            contents.reason += "; cannot set it aside: " + lock.reason();
    }
    if (contents.document)
        return *std::move(contents.document);
    m_log.write(fmt::format("Quillox: cannot read the defaults: {}", contents.reason));
    return {};
}

FileResult UserDefaultsFile::update(const std::vector<DefaultsValue>& values) const
{
    if (auto made = makeDirectories(std::filesystem::path(m_path).parent_path().string()); !made)
        return made;
    const DefaultsLock lock(m_path);
    if (!lock.reason().empty())
        return { lock.reason() };
    auto contents = lookAndRepair();
    if (!contents.document)
        return { contents.reason };
    removeUnfinishedReplacements(m_path);
    for (const auto& value : values)
        contents.document->setValue(value.key, value.json);
    return replaceFile(m_path, contents.document->text());
}

UserDefaultsFile::Contents UserDefaultsFile::look() const
{
    const auto file = readFile(m_path);
    if (file.isMissing)
        return { DefaultsDocument {}, false, {} };
    if (!file.text)
        return { {}, false, file.reason };
    std::string reason;
    auto document = DefaultsDocument::parse(*file.text, reason);
    const auto isDamaged = !document;
    return { std::move(document), isDamaged, isDamaged ? m_path + ": " + reason : "" };
}

UserDefaultsFile::Contents UserDefaultsFile::lookAndRepair() const
{
    auto contents = look();
    if (!contents.isDamaged)
        return contents;
    if (const auto moved = setAside(contents.reason); !moved)
        return { {}, true, contents.reason + "; cannot set it aside: " + moved.reason };
    return { DefaultsDocument {}, false, {} };
}

FileResult UserDefaultsFile::setAside(const std::string& reason) const
{
    std::string name;
    const auto moved = setFileAside(m_path, name);
    if (moved)
        m_log.write(fmt::format("Quillox: set aside damaged defaults as {}: {}", name, reason));
    return moved;
}

} // namespace quillox
