#include "platform/linux/lock/RestoreNote.h"

#include "platform/linux/system/AtomicFile.h"
#include "ports/RunLoop.h"
#include "ports/SystemLog.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fmt/format.h>
#include <gio/gio.h>
#include <utility>

namespace quillox {

std::string restoreNotePathFromEnvironment()
{
    constexpr auto file = "Quillox/restore.json";
    if (const auto* folder = g_get_user_state_dir(); g_path_is_absolute(folder))
        return fmt::format("{}/{}", folder, file);
    return fmt::format("{}/.local/state/{}", g_get_home_dir(), file);
}

RestoreNote::RestoreNote(std::string path, RunLoop& runLoop, SystemLog& log)
    : m_path(std::move(path))
    , m_runLoop(runLoop)
    , m_log(log)
{
    m_onWritten = m_lifetime.guard([this] { handleWritten(); });
}

RestoreNote::~RestoreNote()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    if (m_worker.joinable())
        m_worker.join();
}

void RestoreNote::load()
{
    removeUnfinishedReplacements(m_path);
    const auto file = readFile(m_path);
    if (file.isMissing)
        return;
    auto contents = parseRestoration(file.text.value_or(""));
    if (!contents) {
        const auto aside = m_path + ".damaged";
        const bool isAside = std::rename(m_path.c_str(), aside.c_str()) == 0;
        m_log.write(fmt::format("Quillox: what to put back is not known, {} cannot be read{}{}.",
            m_path, isAside ? " and is now " : "", isAside ? aside : ""));
        return;
    }
    m_contents = *std::move(contents);
    const std::lock_guard lock(m_mutex);
    m_text = restorationText(m_contents);
    m_settingCount = m_contents.settings.size();
}

void RestoreNote::save(std::function<void()> onSaved)
{
    auto text = hasToPutBack(m_contents) ? restorationText(m_contents) : std::string();
    if (onSaved)
        m_waiting.push_back(std::move(onSaved));
    const std::lock_guard lock(m_mutex);
    if (text == m_text) {
        if (!m_isWriteWanted && !m_isWriting)
            m_runLoop.post(m_onWritten);
        return;
    }
    m_text = std::move(text);
    m_hasFewerSettings = m_hasFewerSettings || m_contents.settings.size() < m_settingCount;
    m_settingCount = m_contents.settings.size();
    m_isWriteWanted = true;
    if (!m_worker.joinable())
        m_worker = std::thread([this] { work(); });
    m_changed.notify_all();
}

void RestoreNote::work()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_isWriteWanted || m_isStopping; });
        if (!m_isWriteWanted)
            return;
        m_isWriteWanted = false;
        m_isWriting = true;
        const auto text = m_text;
        const bool waitsForSettings = std::exchange(m_hasFewerSettings, false);
        lock.unlock();
        if (const auto result = write(text, waitsForSettings); !result) {
            m_log.write(fmt::format(
                "Quillox: what to put back after a crash is not noted: {}.", result.reason));
        }
        lock.lock();
        m_isWriting = false;
        if (!m_isWriteWanted && !m_isStopping)
            m_runLoop.post(m_onWritten);
    }
}

FileResult RestoreNote::write(const std::string& text, bool waitsForSettings) const
{
    // What was put back counts once the settings' service has it.
    if (waitsForSettings)
        g_settings_sync();
    if (!text.empty()) {
        auto made = makeDirectories(std::filesystem::path(m_path).parent_path().string());
        return made ? replaceFile(m_path, text, FilePermissions::ownerOnly) : made;
    }
    if (::unlink(m_path.c_str()) != 0 && errno != ENOENT)
        return { fmt::format("{}: {}", m_path, std::strerror(errno)) };
    return {};
}

void RestoreNote::handleWritten()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_isWriteWanted || m_isWriting)
            return; // Newer contents are under way; they will be reported.
    }
    const auto waiting = std::exchange(m_waiting, {});
    for (const auto& onSaved : waiting)
        onSaved();
}

} // namespace quillox
