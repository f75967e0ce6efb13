#pragma once

#include "ports/UpdateFeed.h"

#include <chrono>

namespace quillox {

class RunLoop;

/// Fetches by HTTP with libsoup, each time in a session and on a thread of its own.
class UpdateFeedSoup final : public UpdateFeed {
public:
    struct Patience {
        std::chrono::seconds silence { 30 }; ///< Without a byte.
        std::chrono::seconds text { 120 }; ///< For a text as a whole,
        std::chrono::seconds file { 6 * 3600 }; ///< and a file.
    };

    /// The loop outlives this and the handles.
    UpdateFeedSoup(RunLoop& runLoop, Patience patience)
        : m_runLoop(runLoop)
        , m_patience(patience)
    {
    }
    explicit UpdateFeedSoup(RunLoop& runLoop)
        : UpdateFeedSoup(runLoop, {})
    {
    }

    Handle fetchText(const std::string& address, std::size_t limit, OnOutcome) override;
    Handle fetchFile(
        const File&, std::function<void(std::uint64_t)> onProgress, OnOutcome) override;

private:
    RunLoop& m_runLoop;
    Patience m_patience;
};

} // namespace quillox
