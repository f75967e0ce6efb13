#pragma once

#include "ports/RunLoop.h"
#include "resilience/update/UpdateManifest.h"
#include "resilience/update/UpdateNotes.h"

namespace quillox {

/// What a manifest is held against.
struct UpdateCircumstances {
    Version running;
    Version system; ///< The C library's.
    UpdateNotes notes;
    RunLoop::WallTime now;
};

/// What to make of a manifest whose signature is right.
struct UpdateVerdict {
    enum class Kind { UpToDate, Newer, Refused };
    Kind kind = Kind::Refused;
    std::string reason; ///< When refused: a clause for the log, without its full stop.

    bool operator==(const UpdateVerdict&) const = default;
};

/// An archive larger than that, in bytes, is a mistake.
inline constexpr std::uint64_t largestArchive = std::uint64_t { 512 } << 20;

UpdateVerdict judge(const UpdateManifest&, const UpdateCircumstances&);

} // namespace quillox
