#pragma once

#include "ports/Event.h"
#include "support/Handle.h"

#include <functional>

namespace quillox {

/// Input events on their way to this application's own windows. Only real input counts: nothing
/// that a page or another program makes up for a window of ours arrives here as long as the
/// platform can tell. Main thread only.
class EventMonitors {
public:
    enum class Verdict { Pass, Swallow };
    using Handler = std::function<Verdict(const Event&)>;

    virtual ~EventMonitors() = default;

    /// Calls `handler` once for each event whose type is in `mask`, before any window sees it.
    /// Every monitor is asked, in no promised order; the windows get the event only when all of
    /// them pass it. A monitor may add and end monitors, its own too, while it is asked. A touch
    /// counts as the left button. An empty handle means that events cannot be watched.
    [[nodiscard]] virtual Handle addLocalMonitor(EventMask mask, Handler handler) = 0;
};

} // namespace quillox
