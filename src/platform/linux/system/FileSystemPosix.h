#pragma once

#include "ports/FileSystem.h"

namespace quillox {

class FileSystemPosix final : public FileSystem {
public:
    bool exists(const std::string& path) const override;
    bool isDirectory(const std::string& path) const override;
};

} // namespace quillox
