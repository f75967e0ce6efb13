#include "platform/linux/system/Environment.h"

#include "ports/SystemLog.h"

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
        "GTK_EXE_PREFIX", "GTK_DATA_PREFIX", "GSK_DEBUG", "WEBKIT_INSPECTOR_SERVER",
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

    bool wantsOpenGL(SystemLog& log)
    {
        const auto* configured = std::getenv("QUILLOX_GL");
        const std::string_view choice = configured ? configured : "";
        if (choice == "on" || choice == "off") {
            log.write(fmt::format("Quillox: OpenGL is {}, as QUILLOX_GL says.", choice));
            return choice == "on";
        }
        const bool hasCard = hasGraphicsCard();
        log.write(hasCard ? "Quillox: OpenGL is on; there is a graphics card."
                          : "Quillox: OpenGL is off; no graphics card can be used.");
        return hasCard;
    }

} // namespace

void prepareEnvironment(SystemLog& log)
{
    for (const auto* name : backDoors)
        unsetenv(name);
    if (!wantsOpenGL(log))
        setenv("GDK_DEBUG", "gl-disable", 1);
}

} // namespace quillox
