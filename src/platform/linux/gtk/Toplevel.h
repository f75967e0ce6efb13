#pragma once

#include <gtkmm/window.h>

namespace quillox {

/// Keeps the toolkit's inspector from opening over this window; every window of ours needs it.
inline void refuseInspector(Gtk::Window& window)
{
    g_signal_connect(window.gobj(), "enable-debugging",
        G_CALLBACK(+[](GtkWindow* asked, gboolean, gpointer) -> gboolean {
            g_signal_stop_emission_by_name(asked, "enable-debugging");
            return TRUE;
        }),
        nullptr);
}

} // namespace quillox
