#pragma once

#include "support/Handle.h"

#include <chrono>
#include <functional>

namespace quillox {

/// The main loop: time, timers and work for later. Everything is called, and calls back, on the
/// main thread, except `post`, which any thread may call.
class RunLoop {
public:
    using Duration = std::chrono::nanoseconds;
    using WallTime = std::chrono::time_point<std::chrono::system_clock, Duration>;
    using MonotonicTime = std::chrono::time_point<std::chrono::steady_clock, Duration>;
    using Callback = std::function<void()>;

    virtual ~RunLoop() = default;

    /// The calendar's time. It may jump in both directions when the clock is set.
    virtual WallTime now() const = 0;

    /// Never goes back and does not notice clock changes.
    virtual MonotonicTime monotonicNow() const = 0;

    /// Calls once, not before `delay` has passed on the monotonic clock; never from within this
    /// call.
    [[nodiscard]] virtual Handle after(Duration delay, Callback) = 0;

    /// Calls again and again, `interval` apart, first after one interval. Ticks that were missed
    /// because the loop was busy are not made up for. `interval` must be above zero.
    [[nodiscard]] virtual Handle every(Duration interval, Callback) = 0;

    /// Calls once as soon as the loop is free, in the order of posting; never from within this
    /// call.
    virtual void post(Callback) = 0;
};

} // namespace quillox
