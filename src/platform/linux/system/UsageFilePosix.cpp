#include "platform/linux/system/UsageFilePosix.h"

#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <glib.h>
#include <system_error>
#include <utility>

namespace quillox {

namespace {

    /// Some decades of many sites.
    constexpr std::size_t largestUsageFile = std::size_t { 512 } << 20;

} // namespace

std::string usagePathFromEnvironment()
{
    return std::string(g_get_user_data_dir()) + "/Quillox/usage.json";
}

UsageFilePosix::UsageFilePosix(std::string path, SystemLog& log)
    : m_path(std::move(path))
    , m_log(log)
{
}

UsageFilePosix::~UsageFilePosix()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

std::optional<std::string> UsageFilePosix::read()
{
    auto file = readFile(m_path, largestUsageFile);
    if (!file.text && !file.isMissing) {
        m_log.write(fmt::format("Quillox: cannot read the usage statistics: {}", file.reason));
        setAside();
    }
    return std::move(file.text);
}

void UsageFilePosix::setAside()
{
    const std::lock_guard lock(m_mutex);
    m_isDamaged = true;
}

void UsageFilePosix::write(Producer producer)
{
    const std::lock_guard lock(m_mutex);
    m_producer = std::move(producer);
    if (!m_worker.joinable())
        m_worker = std::thread([this] { work(); });
    m_changed.notify_all();
}

bool UsageFilePosix::hasFailed() const
{
    const std::lock_guard lock(m_mutex);
    return !m_failure.empty() && !m_producer && !m_isWriting;
}

bool UsageFilePosix::isDamaged() const
{
    const std::lock_guard lock(m_mutex);
    return m_isDamaged;
}

std::string UsageFilePosix::flush()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_producer && !m_isWriting; });
    return m_failure;
}

void UsageFilePosix::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_producer || m_isStopping; });
        if (!m_producer)
            return;
        const auto producer = std::exchange(m_producer, nullptr);
        const bool isDamaged = m_isDamaged;
        m_isWriting = true;
        lock.unlock();
        const auto result = replace(producer, isDamaged);
        if (!result)
            m_log.write(
                fmt::format("Quillox: cannot save the usage statistics: {}", result.reason));
        lock.lock();
        m_failure = result.reason;
        m_isDamaged = isDamaged && !result;
        m_isWriting = false;
        m_changed.notify_all();
    }
}

FileResult UsageFilePosix::replace(const Producer& producer, bool isDamaged)
{
    const auto folder = std::filesystem::path(m_path).parent_path().string();
    if (auto made = makeDirectories(folder); !made)
        return made;
    // A link that leads nowhere is followed; one that leads around is in the way.
    std::error_code error;
    const bool isMissing = !std::filesystem::exists(m_path, error) && !error;
    if (isDamaged && !isMissing) {
        std::string name;
        if (auto moved = setFileAside(m_path, name); !moved)
            return moved;
        m_log.write(fmt::format("Quillox: set aside damaged usage statistics as {}", name));
    }
    removeUnfinishedReplacements(m_path);
    return replaceFile(m_path, producer);
}

} // namespace quillox
