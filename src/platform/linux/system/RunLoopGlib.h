#pragma once

#include "ports/RunLoop.h"

#include <glib.h>

namespace quillox {

/// The main loop of a GLib main context; timers have microsecond resolution.
class RunLoopGlib final : public RunLoop {
public:
    /// None stands for the default context, which must then be iterated by the thread that makes
    /// this.
    explicit RunLoopGlib(GMainContext* context = nullptr);

    WallTime now() const override;
    MonotonicTime monotonicNow() const override;
    Handle after(Duration, Callback) override;
    Handle every(Duration, Callback) override;
    void post(Callback) override;

private:
    Handle schedule(Duration delay, Duration interval, Callback);

    GMainContext* m_context;
};

} // namespace quillox
