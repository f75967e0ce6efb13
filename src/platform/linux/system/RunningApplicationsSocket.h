#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "ports/RunningApplications.h"
#include "support/Handle.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

class SystemLog;

/// Single instance without a bus: the first copy holds a lock on a file and listens on a socket
/// beside it, both in the user's runtime folder. The kernel frees the lock with its process, so
/// that a crash leaves nothing stale.
class RunningApplicationsSocket final : public RunningApplications {
public:
    /// `folder` must belong to this user alone. Tries at once to become the first copy.
    RunningApplicationsSocket(std::string folder, std::string identifier, SystemLog&);
    ~RunningApplicationsSocket() override;

    /// `$XDG_RUNTIME_DIR`, or a private folder in the temporary folder when it is not set.
    static std::string runtimeFolder(const std::string& identifier);

    /// The first copy, looked for without taking its place; 0 when there is none.
    static ProcessId firstCopy(const std::string& identifier);

    /// Called in the first copy when another one asked for it, with the token that its launcher
    /// gave that copy to raise windows with; it may be empty.
    void setOnActivate(std::function<void(const std::string& token)> onActivate);

    ProcessId currentProcess() const override;
    std::vector<ProcessId> list(const std::string& identifier) override;
    void activateAllWindows(ProcessId) override;

private:
    std::string path(const char* suffix) const { return m_folder + "/" + m_identifier + suffix; }
    bool becomeFirst();
    void listen();
    void acceptConnection();
    void answer(int connection);

    std::string m_folder;
    std::string m_identifier;
    SystemLog& m_log;
    FileDescriptor m_lock;
    bool m_isFirst = false;
    FileDescriptor m_listener;
    Handle m_listenerWatch;
    struct Connection {
        FileDescriptor socket;
        Handle watch;
    };
    std::vector<std::unique_ptr<Connection>> m_connections;
    std::function<void(const std::string&)> m_onActivate;
};

} // namespace quillox
