#include "platform/linux/system/Environment.h"

#include "local/LocalSchemeHandler.h"

#include "kiosk/PageGuard.h"

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
        "WEBKIT_WEB_PROCESS_EXTENSIONS_PATH", "G_MESSAGES_DEBUG",
        // Code that GStreamer would run in the pages' processes, and what it would write down.
        "GST_PLUGIN_PATH", "GST_PLUGIN_PATH_1_0", "GST_PLUGIN_SYSTEM_PATH",
        "GST_PLUGIN_SYSTEM_PATH_1_0", "GST_PLUGIN_SCANNER", "GST_PLUGIN_SCANNER_1_0", "GST_TRACERS",
        "GST_DEBUG", "GST_DEBUG_FILE", "GST_DEBUG_DUMP_DOT_DIR",
        // Playlists, whose entries are fetched without a look at who asks.
        "WEBKIT_GST_ENABLE_HLS_SUPPORT", "WEBKIT_GST_ENABLE_DASH_SUPPORT" };

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
    // The engine asks GStreamer for nothing else; our module takes it from there.
    setenv("WEBKIT_GST_ALLOWED_URI_PROTOCOLS", LocalSchemeHandler::scheme, 1);
    const auto [usesOpenGL, reason] = decideGraphics();
    if (!usesOpenGL) {
        setenv("GDK_DEBUG", "gl-disable", 1);
        setenv("GSK_RENDERER", "cairo", 1);
    }
    return fmt::format("Quillox: OpenGL is {}; {}.", usesOpenGL ? "on" : "off", reason);
}

unsigned pageMemoryLimit()
{
    const auto* configured = std::getenv("QUILLOX_PAGE_MEMORY");
    if (const int limit = configured ? std::atoi(configured) : 0; limit > 0)
        return static_cast<unsigned>(limit);
    const auto pages = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES));
    const auto pageSize = static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    return PageGuard::memoryLimit(pages * pageSize >> 20);
}

} // namespace quillox
