#pragma once

#include "support/Version.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// The newest version, as its maker announces it.
struct UpdateManifest {
    using Time = std::chrono::sys_seconds;

    Version version;
    std::string file; ///< The archive's name, in the manifest's own folder.
    std::uint64_t size = 0; ///< Bytes of the archive.
    std::string sha256; ///< Of the archive, in lower-case hexadecimal.
    Version minimumSystem; ///< The oldest C library that it runs with.
    Time issued; ///< When it was signed,
    Time expires; ///< and from when on it is too old to be believed.

    /// Reads a JSON object of exactly these fields; times are seconds since 1970. None for
    /// anything else, a file name with other characters than A-Z a-z 0-9 . _ - among it.
    static std::optional<UpdateManifest> parse(std::string_view json);

    bool operator==(const UpdateManifest&) const = default;
};

/// The one file of a feed: a line that names the format, a line with the signature in lower-case
/// hexadecimal, and the manifest. The signature is made over the first line and the manifest.
struct SignedManifest {
    static constexpr std::size_t largestSize = 8192;
    static constexpr std::string_view format = "quillox-update 1\n";

    std::string signature; ///< 64 bytes.
    std::string signedBytes;

    /// None when it is no such file. Says nothing about whether the signature is right.
    static std::optional<SignedManifest> parse(std::string_view text);

    std::string_view manifest() const
    {
        return std::string_view(signedBytes).substr(format.size());
    }
};

} // namespace quillox
