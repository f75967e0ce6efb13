#include "platform/linux/gtk/WindowPlacementWayland.h"

#include "platform/linux/gtk/ScreensGdk.h"
#include "platform/linux/gtk/WindowPlacementX11.h"

#include <gdk/wayland/gdkwayland.h>

namespace quillox {

namespace {

    bool offers(const char* interface)
    {
        auto* display = gdk_display_get_default();
        return GDK_IS_WAYLAND_DISPLAY(display)
            && gdk_wayland_display_query_registry(display, interface);
    }

} // namespace

bool hasShortcutsInhibitor()
{
    return offers("zwp_keyboard_shortcuts_inhibit_manager_v1");
}

bool isSingleWindowCompositor()
{
    // Of the compositors with screen copying, those that arrange windows also offer layers for
    // panels.
    return offers("zwlr_screencopy_manager_v1") && !offers("zwlr_layer_shell_v1");
}

bool WindowPlacementWayland::canCoverSeparateScreens() const
{
    return !isSingleWindowCompositor();
}

bool WindowPlacementWayland::fillsScreen() const
{
    return isSingleWindowCompositor();
}

void WindowPlacementWayland::prepare(Gtk::Window& window)
{
    // A compositor's own commands can end it.
    window.property_fullscreened().signal_changed().connect([this, &window] {
        if (m_covered.contains(&window) && !window.is_fullscreen())
            fillScreen(window);
    });
}

void WindowPlacementWayland::cover(
    Gtk::Window& window, std::uint32_t displayNumber, const Rect& frame)
{
    m_covered[&window] = displayNumber;
    window.set_default_size(static_cast<int>(frame.width), static_cast<int>(frame.height));
    fillScreen(window);
    window.set_visible(true);
}

void WindowPlacementWayland::hide(Gtk::Window& window)
{
    m_covered.erase(&window);
    window.set_visible(false);
}

void WindowPlacementWayland::fillScreen(Gtk::Window& window)
{
    if (auto* monitor = m_screens.monitor(m_covered.at(&window)))
        gtk_window_fullscreen_on_monitor(window.gobj(), monitor);
    else
        window.fullscreen();
}

void WindowPlacementWayland::takeKeyboard(Gtk::Window& window)
{
    window.present();
}

void WindowPlacementWayland::present(Gtk::Window& window)
{
    window.present();
}

std::unique_ptr<WindowPlacement> makeWindowPlacement(ScreensGdk& screens, RunLoop& runLoop)
{
    if (GDK_IS_X11_DISPLAY(gdk_display_get_default()))
        return std::make_unique<WindowPlacementX11>(screens, runLoop);
    return std::make_unique<WindowPlacementWayland>(screens);
}

} // namespace quillox
