#pragma once

#include "ports/RunLoop.h"
#include "ports/WebView.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quillox {

class SystemLog;

/// Brings the page back when the process that it runs in crashes, takes too much memory or no
/// longer answers, also when nobody touches the screen. Never gives up. Main thread only.
class PageGuard {
public:
    class Delegate {
    public:
        virtual ~Delegate() = default;
        virtual void reloadPage() = 0;
        virtual void loadStartPage() = 0;
        /// Hides what is left of the page until one is there again.
        virtual void coverPage() = 0;
    };

    /// A page that hangs is noticed within the sum of both.
    static constexpr std::chrono::seconds pingInterval { 4 };
    static constexpr std::chrono::seconds answerPatience { 5 };
    /// A process that has shown nothing yet is still being started.
    static constexpr std::chrono::seconds startPatience { 30 };
    /// A page that lived this long after it was finished, or for a minute in any case, counts as a
    /// good one; its next crash is the first.
    static constexpr std::chrono::seconds healthyTime { 10 };
    static constexpr std::chrono::seconds longestPause { 60 };

    /// The memory that a page may take, in MiB, on a machine with so much: half of it, between
    /// half a gigabyte and four.
    static unsigned memoryLimit(std::uint64_t machineMemory)
    {
        return static_cast<unsigned>(std::clamp<std::uint64_t>(machineMemory / 2, 512, 4096));
    }

    PageGuard(RunLoop&, SystemLog&, Delegate&);

    /// Begins a run. The view must stay until `stop`.
    void start(WebView&);
    void stop();

    void handleCommittedLoad();
    void handleFinishedLoad();
    void handlePageProcessEnd(PageProcessEnd);
    void handleNetworkProcessEnd();

private:
    void ping();
    void handleSilence(RunLoop::MonotonicTime due);
    void recover(std::string_view incident);
    void loadSomePage();
    std::chrono::seconds nextPause();

    RunLoop& m_runLoop;
    SystemLog& m_log;
    Delegate& m_delegate;
    WebView* m_view = nullptr;

    Handle m_pingTimer;
    Handle m_answerTimer; ///< Runs while an answer is awaited.
    Handle m_reloadTimer;
    bool m_hasCommitted = false; ///< Since the process was started.
    int m_incidentsInARow = 0;
    std::optional<RunLoop::MonotonicTime> m_healthyAt; ///< None before anything was committed.
    Lifetime m_lifetime;
};

} // namespace quillox
