#pragma once

#include <gio/gio.h>

namespace quillox {

/// Whether there is a message bus to connect to. Asking for one that is not there may start a
/// service that outlives this process. Any thread, as long as nobody changes the environment.
bool isBusReachable(GBusType);

} // namespace quillox
