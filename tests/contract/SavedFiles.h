#pragma once

#include <filesystem>
#include <fstream>
#include <stdlib.h>
#include <string_view>
#include <vector>

namespace quillox {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        auto name = (std::filesystem::temp_directory_path() / "quillox-XXXXXX").string();
        path = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }

    std::vector<std::filesystem::path> filesNamed(std::string_view part) const
    {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            if (entry.path().filename().string().find(part) != std::string::npos)
                found.push_back(entry.path());
        }
        return found;
    }

    std::filesystem::path path;
};

inline void put(const std::filesystem::path& path, std::string_view text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

} // namespace quillox
