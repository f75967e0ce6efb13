#include "platform/linux/system/FileTypesGio.h"

#include "platform/linux/system/GlibOwner.h"

#include <gio/gio.h>

namespace quillox {

std::optional<std::string> FileTypesGio::mimeType(const std::string& extension) const
{
    const auto name = "file." + extension;
    const GTextOwner type(g_content_type_guess(name.c_str(), nullptr, 0, nullptr));
    if (!type || g_content_type_is_unknown(type.get()))
        return std::nullopt;
    const GTextOwner mime(g_content_type_get_mime_type(type.get()));
    return mime ? std::optional<std::string>(mime.get()) : std::nullopt;
}

} // namespace quillox
