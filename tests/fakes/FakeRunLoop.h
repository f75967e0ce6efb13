#pragma once

#include "ports/RunLoop.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace quillox {

/// A main loop whose clock is turned by hand. It fails the test when posted work was never run.
class FakeRunLoop final : public RunLoop {
public:
    ~FakeRunLoop() override { EXPECT_TRUE(m_posted.empty()) << "posted work was never run"; }

    /// Lets time pass: posted work first, then each timer at its own moment, in order.
    void advance(Duration duration)
    {
        const auto end = m_elapsed + duration;
        runPosted();
        for (auto timer = nextDue(end); timer != m_timers->end(); timer = nextDue(end)) {
            m_elapsed = timer->second.due;
            const auto callback = timer->second.callback;
            if (timer->second.interval == Duration::zero())
                m_timers->erase(timer);
            else
                timer->second.due += timer->second.interval;
            (*callback)();
            runPosted();
        }
        m_elapsed = end;
    }

    /// Runs what was posted, and what that posts in turn.
    void runPosted()
    {
        for (; !m_posted.empty(); m_posted.pop_front())
            m_posted.front()();
    }

    /// Sets the calendar's clock without any time passing.
    void setClock(WallTime time) { m_wallOffset = time.time_since_epoch() - m_elapsed; }

    std::size_t activeTimers() const { return m_timers->size(); }

    WallTime now() const override { return WallTime(m_wallOffset + m_elapsed); }
    MonotonicTime monotonicNow() const override { return MonotonicTime(m_elapsed); }
    Handle after(Duration delay, Callback callback) override
    {
        return schedule(delay, Duration::zero(), std::move(callback));
    }
    Handle every(Duration interval, Callback callback) override
    {
        return schedule(interval, interval, std::move(callback));
    }
    void post(Callback callback) override { m_posted.push_back(std::move(callback)); }

private:
    struct Timer {
        Duration due;
        Duration interval; ///< Zero: once.
        std::shared_ptr<Callback> callback;
    };
    using Timers = std::map<int, Timer>; ///< By the order in which they were started.

    Handle schedule(Duration delay, Duration interval, Callback callback)
    {
        m_timers->emplace(++m_last,
            Timer { m_elapsed + delay, interval, std::make_shared<Callback>(std::move(callback)) });
        return Handle([timers = m_timers, id = m_last] { timers->erase(id); });
    }

    Timers::iterator nextDue(Duration limit)
    {
        const auto first = std::ranges::min_element(
            *m_timers, {}, [](const auto& entry) { return entry.second.due; });
        return first != m_timers->end() && first->second.due <= limit ? first : m_timers->end();
    }

    Duration m_elapsed { 0 };
    Duration m_wallOffset = std::chrono::seconds(1'700'000'000);
    std::shared_ptr<Timers> m_timers = std::make_shared<Timers>();
    int m_last = 0;
    std::deque<Callback> m_posted;
};

} // namespace quillox
