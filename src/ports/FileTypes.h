#pragma once

#include <optional>
#include <string>

namespace quillox {

/// The machine's registry of file types. Main thread only.
class FileTypes {
public:
    virtual ~FileTypes() = default;

    /// The preferred MIME type of files with this extension, which comes without its dot; none when
    /// the registry knows none.
    virtual std::optional<std::string> mimeType(const std::string& extension) const = 0;
};

} // namespace quillox
