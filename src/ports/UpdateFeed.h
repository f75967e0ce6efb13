#pragma once

#include "support/Handle.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace quillox {

/// The web server that holds the manifest of updates and their archives. Main thread only; nothing
/// here waits for the network. A redirect is never followed, and a server that cannot prove its
/// name is not listened to.
class UpdateFeed {
public:
    struct Outcome {
        enum class Kind {
            Complete,
            Interrupted, ///< The network's or the server's trouble, which may pass.
            Refused, ///< The server's answer is not to be used.
        };
        Kind kind = Kind::Complete;
        std::string reason; ///< Unless complete: a clause for the log, without its full stop.
        std::string text; ///< Of `fetchText`.
    };
    using OnOutcome = std::function<void(Outcome)>;

    struct File {
        std::string address;
        std::string path; ///< Where it goes; what is there already is taken for its beginning.
        std::uint64_t size = 0; ///< Bytes of the whole. One more is refused.
    };

    virtual ~UpdateFeed() = default;

    /// Fetches a small text of up to so many bytes. The answer comes once, within two minutes, and
    /// not when the handle has gone, which ends the fetch.
    [[nodiscard]] virtual Handle fetchText(const std::string& address, std::size_t limit, OnOutcome)
        = 0;

    /// The same with a file. It ends when nothing came for half a minute; what had come until
    /// then stays, so that the next fetch of it goes on from there. A refused one is removed.
    /// `onProgress` gets the bytes that are there, a few times a second.
    [[nodiscard]] virtual Handle fetchFile(
        const File&, std::function<void(std::uint64_t)> onProgress, OnOutcome)
        = 0;
};

} // namespace quillox
