#include "platform/linux/gtk/AccessibilityTrustSession.h"

#include "platform/linux/gtk/WindowPlacementWayland.h"

#include <gdk/x11/gdkx.h>

namespace quillox {

bool AccessibilityTrustSession::isProcessTrusted() const
{
    return GDK_IS_X11_DISPLAY(gdk_display_get_default()) || hasShortcutsInhibitor()
        || isSingleWindowCompositor();
}

} // namespace quillox
