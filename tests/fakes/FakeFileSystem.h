#pragma once

#include "ports/FileSystem.h"

#include <filesystem>
#include <map>

namespace quillox {

/// Folders and files by name, without contents.
class FakeFileSystem final : public FileSystem {
public:
    bool exists(const std::string& path) const override
    {
        return m_isDirectoryByPath.contains(normal(path));
    }
    bool isDirectory(const std::string& path) const override
    {
        const auto found = m_isDirectoryByPath.find(normal(path));
        return found != m_isDirectoryByPath.end() && found->second;
    }

    /// With all the folders above it.
    void addFile(const std::string& path)
    {
        addDirectory(normal(path).parent_path());
        m_isDirectoryByPath[normal(path)] = false;
    }
    void addDirectory(const std::string& path)
    {
        for (auto name = normal(path); name != name.root_path(); name = name.parent_path())
            m_isDirectoryByPath[name] = true;
    }

private:
    static std::filesystem::path normal(const std::filesystem::path& path)
    {
        const auto name = path.lexically_normal();
        return name.has_filename() ? name : name.parent_path();
    }

    std::map<std::filesystem::path, bool> m_isDirectoryByPath { { "/", true } };
};

} // namespace quillox
