#pragma once

#include "ports/RunLoop.h"

#include <functional>
#include <optional>
#include <utility>

namespace quillox {

/// The clockwork of a held gesture: samples how far a hold is, sixty times a second. Shared by
/// whoever recognises the gesture; what a press, a release and the end of a hold mean is theirs.
/// Main thread only.
class SealHold {
public:
    static constexpr std::chrono::nanoseconds samplingInterval
        = std::chrono::nanoseconds(std::chrono::seconds(1)) / 60;
    static constexpr std::chrono::nanoseconds duration = std::chrono::seconds(1);
    /// A longer pause between two samples does not count: nobody could see whether the keys were
    /// let go meanwhile.
    static constexpr std::chrono::nanoseconds longestPause = std::chrono::milliseconds(250);

    /// `onSample` is given the progress, 0 to 1. It goes on being called until the hold is
    /// cancelled; it may destroy the hold.
    SealHold(RunLoop& runLoop, std::function<void(double)> onSample)
        : m_runLoop(runLoop)
        , m_onSample(std::move(onSample))
    {
    }

    bool isRunning() const { return static_cast<bool>(m_timer); }

    /// Nothing happens when a hold runs already.
    void begin()
    {
        if (m_timer)
            return;
        m_start = m_lastSample = m_runLoop.monotonicNow();
        m_timer = m_runLoop.every(samplingInterval, [this] { sample(); });
    }

    void cancel()
    {
        m_timer.reset();
        m_start.reset();
    }

private:
    void sample()
    {
        if (!m_start)
            return;
        const auto now = m_runLoop.monotonicNow();
        const auto pause = now - std::exchange(m_lastSample, now);
        if (pause > longestPause)
            *m_start += pause;
        const std::chrono::duration<double> held = now - *m_start;
        const double progress = held / std::chrono::duration<double>(duration);
        const auto onSample = m_onSample;
        onSample(progress < 1 ? progress : 1);
    }

    RunLoop& m_runLoop;
    std::function<void(double)> m_onSample;
    std::optional<RunLoop::MonotonicTime> m_start;
    RunLoop::MonotonicTime m_lastSample;
    Handle m_timer;
};

} // namespace quillox
