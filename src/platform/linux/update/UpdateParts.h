#pragma once

#include "ports/SignatureCheck.h"
#include "ports/UpdateFeed.h"

#include <atomic>
#include <optional>
#include <string>

namespace quillox {

class RunLoop;

/// What an installation that maintains itself needs of libraries that nothing else does. The
/// program has them in a module of its own. What is made is the caller's; the loop outlives it.
struct UpdateParts {
    UpdateFeed* (*makeFeed)(RunLoop&);
    SignatureCheck* (*makeSignatureCheck)(const std::string& publicKey, RunLoop&);

    /// As `unpackArchive` has it.
    std::optional<std::string> (*unpack)(const std::string& archive, const std::string& folder,
        const std::atomic<bool>& isCancelled);
};

struct FoundUpdateParts {
    const UpdateParts* parts = nullptr; ///< They stay.
    std::string failure; ///< A clause for the log, why there are none.
};

/// Looks for them once. Each program defines where: in a module, or in itself. Any thread.
const FoundUpdateParts& updateParts();

} // namespace quillox
