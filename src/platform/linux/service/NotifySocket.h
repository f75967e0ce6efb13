#pragma once

#include "platform/linux/system/FileDescriptor.h"

#include <string>
#include <sys/types.h>

namespace quillox {

/// Where a program tells whoever keeps it alive that it still turns, as a service manager would
/// give it. Only what the program itself says counts.
class NotifySocket {
public:
    NotifySocket();

    /// For NOTIFY_SOCKET; empty when there is no socket.
    const std::string& name() const { return m_name; }
    int descriptor() const { return m_socket.get(); }

    /// Takes what has arrived. Whether the process has told that it turns.
    bool takePing(pid_t process);

private:
    FileDescriptor m_socket;
    std::string m_name;
};

} // namespace quillox
