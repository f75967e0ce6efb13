#pragma once

#include "platform/linux/system/FileDescriptor.h"

#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace quillox {

/// Passes on to this process's service manager what a program beside it tells, as if this process
/// had told it: the manager knows no other. Idle where there is no manager.
class NotifyRelay {
public:
    /// Reads NOTIFY_SOCKET.
    NotifyRelay();

    /// For the program's NOTIFY_SOCKET; empty where there is no manager.
    const std::string& name() const { return m_name; }

    /// Readable when something is to be passed on; negative where there is no manager.
    int descriptor() const { return m_socket.get(); }

    void passOn() const;

private:
    FileDescriptor m_socket;
    std::string m_name;
    sockaddr_un m_manager {};
    socklen_t m_managerLength = 0;
};

} // namespace quillox
