#include "platform/linux/system/TextFilesPosix.h"

#include "platform/linux/system/AtomicFile.h"

namespace quillox {

TextFiles::Text TextFilesPosix::read(const std::string& path)
{
    auto file = readFile(path);
    return { std::move(file.text), std::move(file.reason) };
}

std::optional<std::string> TextFilesPosix::write(const std::string& path, std::string_view text)
{
    auto result = replaceFile(path, text, FilePermissions::ownerOnly);
    if (result)
        return std::nullopt;
    return std::move(result.reason);
}

} // namespace quillox
