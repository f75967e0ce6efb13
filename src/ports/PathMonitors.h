#pragma once

#include "support/Handle.h"

#include <functional>
#include <string>

namespace quillox {

enum class PathStatus {
    Satisfied, ///< A network beyond this machine can be reached over a link that works.
    Unsatisfied, ///< There is none: a cable is out, a link is down, no route leads anywhere.
};

/// Watches whether this machine has a network at all. It says nothing about any one server.
class PathMonitors {
public:
    using Handler = std::function<void(PathStatus)>;

    virtual ~PathMonitors() = default;

    /// Calls the handler soon with the present status, and then whenever the status has become
    /// another one; a link that goes up and down quickly may be told once. Every call comes on a
    /// thread of the monitor's own that carries `label`, one at a time, and none comes once the
    /// handle is gone, whose end waits for a call that is under way. A machine that cannot be
    /// watched counts as satisfied. Main thread only.
    [[nodiscard]] virtual Handle startMonitor(const std::string& label, Handler) = 0;
};

} // namespace quillox
