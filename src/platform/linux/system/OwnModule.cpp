#include "platform/linux/system/OwnModule.h"

#include "platform/linux/system/BuildName.h"
#include "platform/linux/system/OwnFiles.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <string_view>

namespace quillox {

OwnModule openOwnModule(const std::string& file, const char* door)
{
    const auto installed = fmt::format("{}/{}", QUILLOX_PRIVATE_LIBRARIES, file);
    const auto path = findOwnFile(file.c_str(), installed.c_str());
    if (!path)
        return { nullptr, fmt::format("{} is not installed", file) };
    auto* const module = dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (!module)
        return { nullptr, dlerror() };
    const auto* const build = static_cast<const char*>(dlsym(module, "quilloxBuild"));
    auto* const found = dlsym(module, door);
    if (!build || std::string_view(build) != buildName || !found)
        return { nullptr, fmt::format("{} is of another version", *path) };
    return { found, "" };
}

} // namespace quillox
