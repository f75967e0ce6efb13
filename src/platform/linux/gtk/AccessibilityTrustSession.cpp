#include "platform/linux/gtk/AccessibilityTrustSession.h"

#include "platform/linux/gtk/WindowPlacementWayland.h"
#include "platform/linux/lock/XwaylandX11.h"

#include <gdk/x11/gdkx.h>

namespace quillox {

bool AccessibilityTrustSession::isProcessTrusted() const
{
    auto* display = gdk_display_get_default();
    return (GDK_IS_X11_DISPLAY(display) && !isXwayland(display)) || hasShortcutsInhibitor()
        || isSingleWindowCompositor();
}

} // namespace quillox
