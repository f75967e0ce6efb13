#include "platform/linux/system/Environment.h"

#include <array>
#include <cstdlib>
#include <fmt/format.h>
#include <glob.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace quillox {

namespace {

    constexpr std::array backDoors { "GTK_DEBUG", "GDK_DEBUG", "GTK_MODULES", "GTK_PATH",
        "GTK_EXE_PREFIX", "GTK_DATA_PREFIX", "GSK_DEBUG", "GSK_RENDERER", "WEBKIT_INSPECTOR_SERVER",
        "WEBKIT_INSPECTOR_HTTP_SERVER", "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS",
        "WEBKIT_WEB_PROCESS_EXTENSIONS_PATH", "G_MESSAGES_DEBUG" };

    /// A driver that renders has a node of its own; software rendering has none.
    bool hasGraphicsCard()
    {
        glob_t found {};
        bool isUsable = false;
        if (glob("/dev/dri/renderD*", 0, nullptr, &found) == 0) {
            for (std::size_t index = 0; index < found.gl_pathc; ++index)
                isUsable = isUsable || access(found.gl_pathv[index], R_OK | W_OK) == 0;
        }
        globfree(&found);
        return isUsable;
    }

    struct Graphics {
        bool usesOpenGL;
        std::string reason;
    };

    Graphics decideGraphics()
    {
        const auto* configured = std::getenv("QUILLOX_GL");
        const std::string_view choice = configured ? configured : "";
        if (choice == "on" || choice == "off")
            return { choice == "on", fmt::format("QUILLOX_GL says {}", choice) };
        if (hasGraphicsCard())
            return { true, "there is a graphics card" };
        return { false, "no graphics card can be used" };
    }

} // namespace

std::string prepareEnvironment()
{
    for (const auto* name : backDoors)
        unsetenv(name);
    const auto [usesOpenGL, reason] = decideGraphics();
    if (!usesOpenGL) {
        setenv("GDK_DEBUG", "gl-disable", 1);
        setenv("GSK_RENDERER", "cairo", 1);
    }
    return fmt::format("Quillox: OpenGL is {}; {}.", usesOpenGL ? "on" : "off", reason);
}

} // namespace quillox
