#pragma once

#include "support/Handle.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// Whether bytes come from the maker. Main thread only.
class SignatureCheck {
public:
    virtual ~SignatureCheck() = default;

    /// Whether `signature`, of 64 bytes, was made over these bytes with the key that belongs to the
    /// maker's public one.
    virtual bool isSigned(std::string_view bytes, std::string_view signature) const = 0;

    /// The SHA-256 of a file in lower-case hexadecimal, none when it cannot be read. It is read on
    /// another thread; the answer comes once, and not when the handle has gone.
    [[nodiscard]] virtual Handle hashFile(
        const std::string& path, std::function<void(std::optional<std::string>)> onHash)
        = 0;
};

} // namespace quillox
