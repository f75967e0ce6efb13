#include "fakes/FakeFileSystem.h"

#include <filesystem>

namespace quillox {

namespace {

    std::string normal(const std::string& path)
    {
        auto text = std::filesystem::path(path).lexically_normal().string();
        while (text.size() > 1 && text.ends_with('/'))
            text.pop_back();
        return text;
    }

} // namespace

bool FakeFileSystem::exists(const std::string& path) const
{
    return m_isDirectoryByPath.contains(normal(path));
}

bool FakeFileSystem::isDirectory(const std::string& path) const
{
    const auto found = m_isDirectoryByPath.find(normal(path));
    return found != m_isDirectoryByPath.end() && found->second;
}

void FakeFileSystem::addFile(const std::string& path)
{
    const std::filesystem::path name(normal(path));
    addDirectory(name.parent_path().string());
    m_isDirectoryByPath[name.string()] = false;
}

void FakeFileSystem::addDirectory(const std::string& path)
{
    for (std::filesystem::path name(normal(path)); name != name.root_path();
         name = name.parent_path())
        m_isDirectoryByPath[name.string()] = true;
}

void FakeFileSystem::remove(const std::string& path)
{
    const auto name = normal(path);
    std::erase_if(m_isDirectoryByPath, [&](const auto& entry) {
        return entry.first == name || entry.first.starts_with(name + "/");
    });
}

} // namespace quillox
