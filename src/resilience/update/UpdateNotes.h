#pragma once

#include "support/Version.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace quillox {

/// What the updater, and the launcher that starts the application, remember from one process to the
/// next. Nothing of it is secret.
struct UpdateNotes {
    /// A version that is whole beside the others and waits for its installation.
    std::optional<Version> staged {};

    /// A version that was installed and has not yet shown that it works,
    struct Trial {
        Version version;
        Version previous; ///< what to go back to when it does not,
        int starts = 0; ///< and how often it was started since.

        bool operator==(const Trial&) const = default;
    };
    std::optional<Trial> trial {};

    /// Versions that did not work here; they are never tried again.
    std::set<Version> rolledBack {};

    /// When the newest manifest that was ever seen was signed, in seconds since 1970.
    std::int64_t newestIssued = 0;

    /// What cannot be understood is left out: better to forget than to stand still.
    static UpdateNotes parse(std::string_view text);
    std::string text() const;

    bool operator==(const UpdateNotes&) const = default;
};

} // namespace quillox
