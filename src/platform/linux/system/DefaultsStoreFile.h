#pragma once

#include "platform/linux/system/DefaultsFile.h"
#include "ports/DefaultsStore.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace quillox {

struct DefaultsPaths {
    /// The user's file.
    std::string user;
    /// Files that an administrator provides, the most important first.
    std::vector<std::string> provided;
};

/// Where the XDG base directories of this process's environment put the defaults.
DefaultsPaths defaultsPathsFromEnvironment();

/// Keeps defaults in a JSON file. Values are read from the disk at every call, so that changes by
/// other processes are seen; writing happens on a worker thread, the newest value of each key at
/// its turn. Values that could not be written are tried again with the next one.
class DefaultsStoreFile final : public DefaultsStore {
public:
    DefaultsStoreFile(DefaultsPaths, SystemLog&);
    /// Waits until what was set is on the disk or has failed.
    ~DefaultsStoreFile() override;

    std::optional<std::string> data(std::string_view key) const override;
    void setData(std::string_view key, std::string_view json) override;
    bool boolean(std::string_view key) const override;
    void setBoolean(std::string_view key, bool value) override;

    /// Waits likewise, after one more attempt at what had failed. False when a value is still not
    /// on the disk; `reason` then names the file and says why.
    bool flush(std::string* reason = nullptr);

private:
    std::optional<std::string> unwrittenValue(std::string_view key) const;
    void requestWrite();
    void work();
    void settle(const std::vector<DefaultsValue>& written, const FileResult&);

    mutable OnceLog m_log;
    UserDefaultsFile m_user;
    std::vector<ProvidedDefaultsFile> m_provided;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    /// In the order of setting; guarded by the mutex, as all that follows.
    std::vector<DefaultsValue> m_unwritten;
    std::string m_failure;
    bool m_isWriteWanted = false;
    bool m_isWriting = false;
    bool m_isStopping = false;
    std::thread m_worker;
};

} // namespace quillox
