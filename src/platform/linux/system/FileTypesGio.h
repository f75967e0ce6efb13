#pragma once

#include "ports/FileTypes.h"

namespace quillox {

/// The shared MIME database of the desktop.
class FileTypesGio final : public FileTypes {
public:
    std::optional<std::string> mimeType(const std::string& extension) const override;
};

} // namespace quillox
