#pragma once

#include "ports/PathMonitors.h"

namespace quillox {

/// Asks the kernel for its routes whenever it says that something changed. A network manager is not
/// asked: it knows nothing of the networks that it does not manage, and takes one without a gateway
/// for none.
class PathMonitorsLinux final : public PathMonitors {
public:
    Handle startMonitor(const std::string& label, Handler) override;
};

} // namespace quillox
