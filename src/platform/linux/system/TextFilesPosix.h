#pragma once

#include "ports/TextFiles.h"

namespace quillox {

class TextFilesPosix final : public TextFiles {
public:
    Text read(const std::string& path) override;
    std::optional<std::string> write(const std::string& path, std::string_view text) override;
};

} // namespace quillox
