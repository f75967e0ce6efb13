#pragma once

#include "ports/FileSystem.h"

#include <map>

namespace quillox {

/// Folders and files by name, without contents.
class FakeFileSystem final : public FileSystem {
public:
    bool exists(const std::string& path) const override;
    bool isDirectory(const std::string& path) const override;

    /// With all the folders above it.
    void addFile(const std::string& path);
    void addDirectory(const std::string& path);
    /// With all that is below it.
    void remove(const std::string& path);

private:
    std::map<std::string, bool> m_isDirectoryByPath { { "/", true } };
};

} // namespace quillox
