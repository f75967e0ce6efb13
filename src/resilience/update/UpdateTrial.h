#pragma once

#include "resilience/update/UpdateNotes.h"

#include <chrono>

namespace quillox {

/// How a version proves itself. It is on trial from its installation until it has shown the page;
/// a version that does not comes so far is rolled back by the launcher, which these rules guide.
/// None of it needs the version on trial to do anything but the one note of its success.
namespace UpdateTrial {

    /// How long a start may take until the page is there.
    inline constexpr std::chrono::seconds patience { 60 };

    /// A start too many may also be a power cut, so that one failure does not condemn.
    inline constexpr int mostStarts = 2;

    /// Whether a version on trial has had its chances.
    bool isOver(const UpdateNotes&);

    /// How a start that was watched came to its end.
    enum class Ending {
        Well, ///< By the user's wish.
        Crashed, ///< Or any other exit with an error.
        Silent, ///< It ran on without showing the page, until the patience was over.
    };

    enum class Verdict {
        Undecided, ///< Nothing is known yet; the next start decides.
        Again, ///< It may have been bad luck.
        RollBack,
    };

    /// `notes` were read after that end. A version whose success is noted is never rolled back.
    Verdict judge(const UpdateNotes&, Ending);

    UpdateNotes begun(UpdateNotes, Version installed, Version previous);
    UpdateNotes started(UpdateNotes);
    UpdateNotes endedWell(UpdateNotes);
    UpdateNotes succeeded(UpdateNotes);
    UpdateNotes rolledBack(UpdateNotes);

}

} // namespace quillox
