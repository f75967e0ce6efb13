#pragma once

#include "ports/EventMonitors.h"
#include "ports/RunLoop.h"
#include "support/Handle.h"

#include <chrono>
#include <cstdint>
#include <functional>

namespace quillox {

/// The input that tells that somebody is there; releases alone do not.
constexpr EventMask activityMask = maskOf(EventType::LeftMouseDown)
    | maskOf(EventType::RightMouseDown) | maskOf(EventType::MouseMoved)
    | maskOf(EventType::LeftMouseDragged) | maskOf(EventType::KeyDown)
    | maskOf(EventType::FlagsChanged) | maskOf(EventType::ScrollWheel)
    | maskOf(EventType::OtherMouseDown);
static_assert(activityMask == 0x240146A);

/// Notices that visitors have walked away: once after each time that somebody was there. Main
/// thread only.
class IdleWatch {
public:
    /// The time between two looks, by which the notice can be late.
    static constexpr std::chrono::seconds checkInterval { 5 };

    IdleWatch(RunLoop&, EventMonitors&);

    /// Calls back when there was no input for `limit`; below a second there is nothing to watch.
    void start(std::chrono::seconds limit, std::function<void()> onIdle);
    void stop();

private:
    void noteActivity();
    void check(std::chrono::seconds limit);

    RunLoop& m_runLoop;
    EventMonitors& m_eventMonitors;
    Handle m_activityMonitor;
    Handle m_idleTimer;
    std::function<void()> m_onIdle;
    /// A clock that is set must neither send a visitor home nor keep a page for hours.
    RunLoop::MonotonicTime m_lastActivity {};
    bool m_didIdleReset = false;
};

} // namespace quillox
