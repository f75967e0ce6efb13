#pragma once

#include <string>
#include <vector>

namespace quillox {

using ProcessId = int;

/// Copies of an application in this session. Main thread only; answers within two seconds, also
/// when a copy hangs.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    virtual ProcessId currentProcess() const = 0;

    /// The processes that run under `identifier`, this one included.
    virtual std::vector<ProcessId> list(const std::string& identifier) = 0;

    /// Asks that process to bring all its windows to the front. One that hangs does so when it can
    /// again.
    virtual void activateAllWindows(ProcessId) = 0;
};

} // namespace quillox
