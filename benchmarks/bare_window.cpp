// The smallest honest rival: one full-screen engine window, tuned as the kiosk tunes itself, that
// locks nothing. What Quillox costs over it is the price of the seal.

#include <filesystem>
#include <memory>
#include <system_error>

#include <unistd.h>

#include <webkit/webkit.h>

namespace {

bool hasGpu()
{
    std::error_code error;
    for (const auto& node : std::filesystem::directory_iterator("/dev/dri", error)) {
        const bool isRenderNode = node.path().filename().native().starts_with("renderD");
        if (isRenderNode && access(node.path().c_str(), R_OK | W_OK) == 0)
            return true;
    }
    return false;
}

void handleActivate(GtkApplication* application, gpointer address)
{
    GtkWidget* window = gtk_application_window_new(application);
    GtkWidget* view = webkit_web_view_new();
    gtk_window_set_child(GTK_WINDOW(window), view);
    gtk_window_fullscreen(GTK_WINDOW(window));
    gtk_window_present(GTK_WINDOW(window));
    webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), static_cast<const char*>(address));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        g_printerr("usage: bare_window ADDRESS\n");
        return 2;
    }
    if (!hasGpu())
        g_setenv("GDK_DEBUG", "gl-disable", FALSE);
    const std::unique_ptr<GtkApplication, decltype(&g_object_unref)> application(
        gtk_application_new("com.orvendal.quillox.bare", G_APPLICATION_NON_UNIQUE), g_object_unref);
    g_signal_connect(application.get(), "activate", G_CALLBACK(handleActivate), argv[1]);
    return g_application_run(G_APPLICATION(application.get()), 1, argv);
}
