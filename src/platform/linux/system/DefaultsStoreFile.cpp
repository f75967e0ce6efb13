#include "platform/linux/system/DefaultsStoreFile.h"

#include <pwd.h>
#include <unistd.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace quillox {

namespace {

    constexpr std::string_view fileInConfigDirectory = "/Quillox/defaults.json";

    std::string environment(const char* name)
    {
        const auto* value = std::getenv(name);
        return value ? value : "";
    }

    /// Relative paths are to be ignored, as the base directory rules say.
    bool isUsable(const std::string& path)
    {
        return path.starts_with('/');
    }

    std::string configHome()
    {
        if (auto path = environment("XDG_CONFIG_HOME"); isUsable(path))
            return path;
        auto home = environment("HOME");
        const auto* user = isUsable(home) ? nullptr : ::getpwuid(::getuid());
        if (user)
            home = user->pw_dir;
        return home + "/.config";
    }

} // namespace

DefaultsPaths defaultsPathsFromEnvironment()
{
    DefaultsPaths paths { configHome().append(fileInConfigDirectory), {} };
    auto directories = environment("XDG_CONFIG_DIRS");
    if (directories.empty())
        directories = "/etc/xdg";
    for (std::size_t begin = 0; begin <= directories.size();) {
        const auto end = std::min(directories.find(':', begin), directories.size());
        auto directory = directories.substr(begin, end - begin);
        if (isUsable(directory))
            paths.provided.push_back(directory.append(fileInConfigDirectory));
        begin = end + 1;
    }
    return paths;
}

DefaultsStoreFile::DefaultsStoreFile(DefaultsPaths paths, SystemLog& log)
    : m_log(log)
    , m_user(std::move(paths.user), m_log)
{
    for (auto& path : paths.provided)
        m_provided.emplace_back(std::move(path), m_log);
}

DefaultsStoreFile::~DefaultsStoreFile()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

std::optional<std::string> DefaultsStoreFile::data(std::string_view key) const
{
    if (auto value = unwrittenValue(key))
        return value;
    if (auto value = m_user.read().value(key))
        return value;
    for (const auto& file : m_provided) {
        if (auto value = file.read().value(key))
            return value;
    }
    return std::nullopt;
}

void DefaultsStoreFile::setData(std::string_view key, std::string_view json)
{
    auto compact = compactJson(json);
    if (!compact)
        return;
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_unwritten, [key](const DefaultsValue& value) { return value.key == key; });
    m_unwritten.push_back({ std::string(key), *std::move(compact) });
    requestWrite();
}

bool DefaultsStoreFile::boolean(std::string_view key) const
{
    return data(key) == "true";
}

void DefaultsStoreFile::setBoolean(std::string_view key, bool value)
{
    setData(key, value ? "true" : "false");
}

bool DefaultsStoreFile::flush(std::string* reason)
{
    std::unique_lock lock(m_mutex);
    if (!m_unwritten.empty() && !m_isWriting)
        requestWrite();
    m_changed.wait(lock, [this] { return !m_isWriteWanted && !m_isWriting; });
    if (reason)
        *reason = m_unwritten.empty() ? "" : m_failure;
    return m_unwritten.empty();
}

std::optional<std::string> DefaultsStoreFile::unwrittenValue(std::string_view key) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::find_if(m_unwritten.begin(), m_unwritten.end(),
        [key](const DefaultsValue& value) { return value.key == key; });
    if (found == m_unwritten.end())
        return std::nullopt;
    return found->json;
}

void DefaultsStoreFile::requestWrite()
{
    m_isWriteWanted = true;
    if (!m_worker.joinable())
        m_worker = std::thread([this] { work(); });
    m_changed.notify_all();
}

void DefaultsStoreFile::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isWriteWanted || m_isStopping; });
        if (!m_isWriteWanted)
            return;
        m_isWriteWanted = false;
        m_isWriting = true;
        const auto values = m_unwritten;
        lock.unlock();
        const auto result = m_user.update(values);
        if (!result)
            m_log.write(fmt::format("Quillox: cannot save the defaults: {}", result.reason));
        lock.lock();
        settle(values, result);
        m_changed.notify_all();
    }
}

void DefaultsStoreFile::settle(const std::vector<DefaultsValue>& written, const FileResult& result)
{
    m_isWriting = false;
    m_failure = result.reason;
    if (!result)
        return;
    // What was set anew while the disk was busy stays for the next turn.
    std::erase_if(m_unwritten, [&written](const DefaultsValue& value) {
        return std::find(written.begin(), written.end(), value) != written.end();
    });
}

} // namespace quillox
