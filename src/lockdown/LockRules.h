#pragma once

#include "lockdown/LockReport.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace quillox {

/// One row of the decision table. Of the rows of one subject the first that applies is the finding;
/// where none applies, there is nothing to say.
struct LockRule {
    using State = LockFinding::State;

    std::string_view subject;
    State state = State::Closed;
    bool (*applies)(const LockFacts&) = nullptr;
    std::string_view title;
    /// "{}" stands for the detail, here and below.
    std::string_view explanation;
    std::string_view remedy = {};
    std::string_view change = {};
    std::string (*detail)(const LockFacts&) = nullptr;
};

/// For rows that need no fact.
inline bool always(const LockFacts&)
{
    return true;
}

inline bool isKioskKnownSealed(const LockFacts& facts)
{
    return facts.kioskProcess != 0 && facts.isKioskSealed == true;
}

/// To name the X server or the compositor in a sentence.
inline std::string serverName(const LockFacts& facts)
{
    return facts.displayServer.empty() ? "the display server" : facts.displayServer;
}

/// The rows of one subject stand together.
std::span<const LockRule> systemLockRules();
/// For an X11 display.
std::span<const LockRule> x11LockRules();
/// For a Wayland display.
std::span<const LockRule> waylandLockRules();

} // namespace quillox
