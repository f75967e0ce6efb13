#include "fakes/FakeRunLoop.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <utility>

namespace quillox {

FakeRunLoop::~FakeRunLoop()
{
    EXPECT_TRUE(m_posted.empty()) << "posted work was never run";
}

void FakeRunLoop::advance(Duration duration)
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

FakeRunLoop::Timers::iterator FakeRunLoop::nextDue(Duration limit)
{
    const auto first = std::ranges::min_element(
        *m_timers, {}, [](const auto& entry) { return entry.second.due; });
    return first != m_timers->end() && first->second.due <= limit ? first : m_timers->end();
}

void FakeRunLoop::runPosted()
{
    while (!m_posted.empty()) {
        const auto callback = std::move(m_posted.front());
        m_posted.pop_front();
        callback();
    }
}

Handle FakeRunLoop::after(Duration delay, Callback callback)
{
    return schedule(delay, Duration::zero(), std::move(callback));
}

Handle FakeRunLoop::every(Duration interval, Callback callback)
{
    return schedule(interval, interval, std::move(callback));
}

Handle FakeRunLoop::schedule(Duration delay, Duration interval, Callback callback)
{
    const auto id = m_nextTimer++;
    m_timers->emplace(
        id, Timer { m_elapsed + delay, interval, std::make_shared<Callback>(std::move(callback)) });
    return Handle([timers = m_timers, id] { timers->erase(id); });
}

void FakeRunLoop::post(Callback callback)
{
    m_posted.push_back(std::move(callback));
}

} // namespace quillox
