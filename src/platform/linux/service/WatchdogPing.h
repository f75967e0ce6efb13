#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "support/Handle.h"

#include <chrono>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

namespace quillox {

class RunLoop;

/// Tells the service manager that started this process that it is ready, and from then on, twice as
/// often as that asks for, that its main loop turns. Whoever hangs is silent, and is ended and
/// started again. Does nothing for a process that was started otherwise. Main thread only.
class WatchdogPing {
public:
    /// Reads NOTIFY_SOCKET, WATCHDOG_USEC and WATCHDOG_PID, and leaves them for a successor that
    /// this process turns into. Make it once, when the main loop is about to run.
    explicit WatchdogPing(RunLoop&);

    /// None when nobody wants to be told.
    std::chrono::microseconds interval() const { return m_interval; }

private:
    void tell(std::string_view state) const;

    FileDescriptor m_socket;
    sockaddr_un m_address {};
    socklen_t m_addressLength = 0;
    std::chrono::microseconds m_interval {};
    Handle m_timer;
};

} // namespace quillox
