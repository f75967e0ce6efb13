#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// Whole text files that the operator names. Waits for the disk.
class TextFiles {
public:
    struct Text {
        /// None when the file cannot be read; `reason` then says why.
        std::optional<std::string> contents;
        std::string reason;
    };

    virtual ~TextFiles() = default;

    virtual Text read(const std::string& path) = 0;

    /// Replaces the file as a whole, or leaves it as it was and gives the reason. Afterwards only
    /// the file's owner can read it.
    virtual std::optional<std::string> write(const std::string& path, std::string_view text) = 0;
};

} // namespace quillox
