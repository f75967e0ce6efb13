#pragma once

#include "lockdown/LockFacts.h"

#include <string>
#include <string_view>
#include <vector>

namespace quillox {

/// One way out or one layer of the lock, and how it stands.
struct LockFinding {
    enum class State {
        Closed,
        NotChecked, ///< Counts as a gap: nobody knows.
        Gap,
        Blocking, ///< Without it there is no lock.
    };

    /// Does not change from release to release.
    std::string_view subject;
    State state = State::Closed;
    std::string title;
    std::string explanation;
    /// What closes it, in words; empty when closed.
    std::string remedy;
    /// The command or the lines of configuration to copy; empty where words say it all.
    std::string change;

    bool operator==(const LockFinding&) const = default;
};

/// How well a session can be sealed.
struct LockReport {
    enum class Verdict { SealedTight, SealedWithGaps, CannotSeal };

    Verdict verdict = Verdict::CannotSeal;
    std::vector<LockFinding> findings;
};

LockReport lockReport(const LockFacts&);

/// For a terminal, the worst first; complete, with its last line ended.
std::string lockReportText(const LockReport&, const LockFacts&);

/// "X11 :0, openbox" and the like, for one line.
std::string displayDescription(const LockFacts&);

} // namespace quillox
