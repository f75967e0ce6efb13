#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "support/Handle.h"

#include <functional>

namespace quillox {

/// Notices the death of the process in which the engine speaks to servers, of which the engine
/// itself tells nobody. Main thread only.
class NetworkProcessWatch {
public:
    explicit NetworkProcessWatch(std::function<void()> onEnd);
    ~NetworkProcessWatch();

    /// Looks for the process, unless one is watched already. The engine starts it with the first
    /// load that needs it, and anew after it died.
    void refresh();

private:
    void handleEnd();

    std::function<void()> m_onEnd;
    FileDescriptor m_process;
    unsigned m_source = 0;
};

} // namespace quillox
