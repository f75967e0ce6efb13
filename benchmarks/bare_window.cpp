// The smallest honest rival: one full-screen engine window, tuned as the kiosk tunes itself, that
// locks nothing. What Quillox costs over it is the price of the seal. With --bar, a progress bar
// that never rests is laid over the page; with --reload, a page whose process ended is loaded again
// at once.

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

/// Fills once a second, in step with the frame clock.
gboolean advanceBar(GtkWidget* bar, GdkFrameClock* clock, gpointer)
{
    const auto time = gdk_frame_clock_get_frame_time(clock);
    gtk_progress_bar_set_fraction(
        GTK_PROGRESS_BAR(bar), static_cast<double>(time % G_USEC_PER_SEC) / G_USEC_PER_SEC);
    return G_SOURCE_CONTINUE;
}

GtkWidget* makeBar()
{
    GtkCssProvider* style = gtk_css_provider_new();
    gtk_css_provider_load_from_data(style,
        "progressbar > trough { min-width: 220px; background: #444; border: none; }"
        "progressbar > trough, progressbar > trough > progress { min-height: 8px; border-radius: "
        "0; }"
        "progressbar > trough > progress { background: #fff; border: none; }",
        -1);
    gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(style),
        GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(style);
    GtkWidget* bar = gtk_progress_bar_new();
    gtk_widget_set_halign(bar, GTK_ALIGN_CENTER);
    gtk_widget_set_valign(bar, GTK_ALIGN_CENTER);
    gtk_widget_add_tick_callback(bar, advanceBar, nullptr, nullptr);
    return bar;
}

struct Scene {
    const char* address;
    bool hasBar;
    bool reloads;
};

void load(WebKitWebView* view, WebKitWebProcessTerminationReason, gpointer scene)
{
    // What reloading brings back would not be drawn.
    webkit_web_view_load_uri(view, static_cast<const Scene*>(scene)->address);
}

void handleActivate(GtkApplication* application, gpointer data)
{
    const auto& scene = *static_cast<const Scene*>(data);
    GtkWidget* window = gtk_application_window_new(application);
    GtkWidget* view = webkit_web_view_new();
    if (scene.reloads)
        g_signal_connect(view, "web-process-terminated", G_CALLBACK(load), data);
    if (scene.hasBar) {
        GtkWidget* overlay = gtk_overlay_new();
        gtk_overlay_set_child(GTK_OVERLAY(overlay), view);
        gtk_overlay_add_overlay(GTK_OVERLAY(overlay), makeBar());
        gtk_window_set_child(GTK_WINDOW(window), overlay);
    } else
        gtk_window_set_child(GTK_WINDOW(window), view);
    gtk_window_fullscreen(GTK_WINDOW(window));
    gtk_window_present(GTK_WINDOW(window));
    webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), scene.address);
}

} // namespace

int main(int argc, char** argv)
{
    const bool hasBar = argc == 3 && g_str_equal(argv[2], "--bar");
    const bool reloads = argc == 3 && g_str_equal(argv[2], "--reload");
    if (argc != 2 && !hasBar && !reloads) {
        g_printerr("usage: bare_window ADDRESS [--bar | --reload]\n");
        return 2;
    }
    Scene scene { argv[1], hasBar, reloads };
    if (!hasGpu())
        g_setenv("GDK_DEBUG", "gl-disable", FALSE);
    const std::unique_ptr<GtkApplication, decltype(&g_object_unref)> application(
        gtk_application_new("com.orvendal.quillox.bare", G_APPLICATION_NON_UNIQUE), g_object_unref);
    g_signal_connect(application.get(), "activate", G_CALLBACK(handleActivate), &scene);
    return g_application_run(G_APPLICATION(application.get()), 1, argv);
}
