#include "platform/linux/gtk/NextFrame.h"

#include <glibmm/main.h>
#include <memory>
#include <utility>

namespace quillox {

namespace {

    using Callback = std::function<void()>;

    void handlePainted(GdkFrameClock* clock, gpointer callback)
    {
        // Nothing of it is called twice, and the disconnecting destroys it.
        Glib::signal_idle().connect_once(
            std::exchange(*static_cast<Callback*>(callback), nullptr), Glib::PRIORITY_LOW);
        g_signal_handlers_disconnect_by_func(
            clock, reinterpret_cast<gpointer>(handlePainted), callback);
    }

} // namespace

void afterNextFrame(Gtk::Window& window, Callback callback)
{
    g_signal_connect_data(
        gtk_widget_get_frame_clock(GTK_WIDGET(window.gobj())), "after-paint",
        G_CALLBACK(handlePainted), std::make_unique<Callback>(std::move(callback)).release(),
        [](gpointer kept, GClosure*) { delete static_cast<Callback*>(kept); },
        static_cast<GConnectFlags>(0));
}

} // namespace quillox
