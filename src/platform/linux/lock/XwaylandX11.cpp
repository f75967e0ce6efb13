#include "platform/linux/lock/XwaylandX11.h"

#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/system/ProcessLook.h"

#include <string_view>

// Last, since Xlib claims common words.
#include <gdk/x11/gdkx.h>

namespace quillox {

namespace {

    bool hasXwaylandOutput(GdkDisplay* display)
    {
        auto* monitors = gdk_display_get_monitors(display);
        for (guint index = 0; index < g_list_model_get_n_items(monitors); ++index) {
            const GObjectOwner<GdkMonitor> monitor(
                GDK_MONITOR(g_list_model_get_item(monitors, index)));
            const auto* connector = gdk_monitor_get_connector(monitor.get());
            if (connector && std::string_view(connector).starts_with("XWAYLAND"))
                return true;
        }
        return false;
    }

} // namespace

bool isXwayland(GdkDisplay* display)
{
    if (!display || !GDK_IS_X11_DISPLAY(display))
        return false;
    auto* server = gdk_x11_display_get_xdisplay(display);
    int opcode = 0;
    int event = 0;
    int error = 0;
    // Its socket may be the compositor's; older ones only show by what they call their outputs.
    return processName(peerProcess(ConnectionNumber(server))) == "Xwayland"
        || XQueryExtension(server, "XWAYLAND", &opcode, &event, &error)
        || hasXwaylandOutput(display);
}

} // namespace quillox
