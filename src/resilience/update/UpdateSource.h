#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// Where updates come from and who signs them, as the application's own property file says.
struct UpdateSource {
    std::string feed; ///< The manifest's address.
    std::string publicKey; ///< 32 bytes.

    /// Reads lines of "key=value": `feed`, `publicKey` in lower-case hexadecimal, and
    /// `allowLoopback`, which is "true" for tests. Empty lines and those that begin with "#" are
    /// skipped. None when a line is anything else, a key comes twice, one of the first two is
    /// missing, or the feed's address is neither HTTPS nor, where that is allowed, HTTP to this
    /// very machine by number.
    static std::optional<UpdateSource> parse(std::string_view properties);

    /// The address of a file in the manifest's folder. `name` has no "/".
    std::string addressOf(std::string_view name) const;

    bool operator==(const UpdateSource&) const = default;
};

} // namespace quillox
