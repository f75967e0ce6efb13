#pragma once

#include "ports/RunLoop.h"

#include <cstdint>
#include <deque>
#include <map>
#include <memory>

namespace quillox {

/// A main loop whose clock is turned by hand. It fails the test when posted work was never run.
class FakeRunLoop final : public RunLoop {
public:
    ~FakeRunLoop() override;

    /// Lets time pass: posted work first, then each timer at its own moment, in order.
    void advance(Duration);

    /// Runs what was posted, and what that posts in turn.
    void runPosted();

    /// Sets the calendar's clock without any time passing.
    void setClock(WallTime time) { m_wallOffset = time.time_since_epoch() - m_elapsed; }

    std::size_t activeTimers() const { return m_timers->size(); }

    WallTime now() const override { return WallTime(m_wallOffset + m_elapsed); }
    MonotonicTime monotonicNow() const override { return MonotonicTime(m_elapsed); }
    Handle after(Duration, Callback) override;
    Handle every(Duration, Callback) override;
    void post(Callback) override;

private:
    struct Timer {
        Duration due;
        Duration interval; ///< Zero: once.
        std::shared_ptr<Callback> callback;
    };
    using Timers = std::map<std::uint64_t, Timer>;

    Handle schedule(Duration delay, Duration interval, Callback);
    Timers::iterator nextDue(Duration limit);

    Duration m_elapsed { 0 };
    Duration m_wallOffset = std::chrono::seconds(1'700'000'000);
    std::shared_ptr<Timers> m_timers = std::make_shared<Timers>();
    std::uint64_t m_nextTimer = 0;
    std::deque<Callback> m_posted;
};

} // namespace quillox
