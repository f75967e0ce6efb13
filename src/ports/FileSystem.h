#pragma once

#include <string>

namespace quillox {

/// What the core asks about files. Symbolic links are followed; a path that cannot be looked at
/// does not exist.
class FileSystem {
public:
    virtual ~FileSystem() = default;

    virtual bool exists(const std::string& path) const = 0;
    virtual bool isDirectory(const std::string& path) const = 0;
};

} // namespace quillox
