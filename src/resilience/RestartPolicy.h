#pragma once

#include <algorithm>
#include <chrono>

namespace quillox {

/// How long to wait before a program that crashed is started again: every crash soon after the one
/// before doubles the pause, up to a limit, and a long life forgives them all. It never gives up.
class RestartPolicy {
public:
    static constexpr std::chrono::seconds shortestPause { 1 };
    static constexpr std::chrono::seconds longestPause { 60 };
    static constexpr std::chrono::seconds longLife { 60 };

    /// `life` is how long the program ran before this crash.
    std::chrono::seconds pauseAfterCrash(std::chrono::nanoseconds life)
    {
        m_pause = life >= longLife ? shortestPause : std::min(m_pause * 2, longestPause);
        m_pause = std::max(m_pause, shortestPause);
        return m_pause;
    }

private:
    std::chrono::seconds m_pause { 0 };
};

} // namespace quillox
