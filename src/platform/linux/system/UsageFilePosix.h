#pragma once

#include "platform/linux/system/DefaultsFile.h"
#include "ports/UsageFile.h"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace quillox {

/// Where the XDG base directories of this process's environment put the statistics.
std::string usagePathFromEnvironment();

/// Keeps the statistics in a file that is replaced atomically and durably, on a worker thread.
class UsageFilePosix final : public UsageFile {
public:
    UsageFilePosix(std::string path, SystemLog&);
    /// Waits until what was to be written is on the disk or has failed.
    ~UsageFilePosix() override;

    std::optional<std::string> read() override;
    void setAside() override;
    void write(Producer) override;
    bool hasFailed() const override;

    /// Whether what is there is still to be set aside.
    bool isDamaged() const;

    /// Waits likewise; empty, or why the last write failed.
    std::string flush();

private:
    void work();
    FileResult replace(const Producer&, bool isDamaged);

    const std::string m_path;
    OnceLog m_log;

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    Producer m_producer; ///< None when nothing waits; guarded by the mutex, as all that follows.
    bool m_isDamaged = false; ///< What is there is to be set aside before the next write.
    bool m_isWriting = false;
    bool m_isStopping = false;
    std::string m_failure;
    std::thread m_worker;
};

} // namespace quillox
