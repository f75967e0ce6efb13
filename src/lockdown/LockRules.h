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

/// The rows of one subject stand together.
std::span<const LockRule> systemLockRules();
/// For an X11 display.
std::span<const LockRule> x11LockRules();
/// For a Wayland display.
std::span<const LockRule> waylandLockRules();

} // namespace quillox
