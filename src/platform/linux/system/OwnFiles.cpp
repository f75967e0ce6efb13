#include "platform/linux/system/OwnFiles.h"

#include <filesystem>

namespace quillox {

std::optional<std::string> findOwnFile(const char* built, const char* installed)
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    for (const auto* const place : { built, installed }) {
        const auto file = (program / place).lexically_normal();
        if (std::filesystem::is_regular_file(file, error))
            return file.string();
    }
    return std::nullopt;
}

} // namespace quillox
