#include "platform/linux/gtk/WindowPlacementWayland.h"
#include "platform/linux/survey/LockSurveyLinux.h"
#include "platform/linux/survey/SwayBindings.h"
#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/system/ProcessLook.h"

#include <algorithm>
#include <cstdlib>
#include <fmt/format.h>
#include <gdk/wayland/gdkwayland.h>
#include <gio/gio.h>
#include <string_view>
#include <wayland-client-core.h>

namespace quillox {

namespace {

    constexpr int terminals = 12;

    /// Whether a key of the layout that the compositor sent stands for a virtual terminal.
    std::optional<bool> layoutSwitchesTerminals(GdkDisplay* display)
    {
        // The seat comes with the first answer, its layout with the next.
        for (int answers = 0; answers < 2; ++answers)
            gdk_display_sync(display);
        const auto capabilities = gdk_seat_get_capabilities(gdk_display_get_default_seat(display));
        if ((capabilities & GDK_SEAT_CAPABILITY_KEYBOARD) == 0)
            return std::nullopt;
        for (guint number = 0; number < terminals; ++number) {
            GdkKeymapKey* keys = nullptr;
            int count = 0;
            const bool isThere
                = gdk_display_map_keyval(display, GDK_KEY_Switch_VT_1 + number, &keys, &count);
            g_free(keys);
            if (isThere)
                return true;
        }
        return false;
    }

    /// Whether cage was started with -s; its options are those before the program that it shows.
    std::optional<bool> cageSwitchesTerminals(const std::vector<std::string>& arguments)
    {
        if (arguments.empty())
            return std::nullopt;
        for (std::size_t index = 1; index < arguments.size(); ++index) {
            const std::string_view argument = arguments[index];
            if (argument.size() < 2 || argument[0] != '-' || argument == "--")
                break;
            const auto valueOption = std::min(argument.find('m'), argument.size());
            if (argument.substr(0, valueOption).find('s') != std::string_view::npos)
                return true;
            if (valueOption + 1 == argument.size())
                ++index;
        }
        return false;
    }

    /// The keys of one of the compositor's own settings; nothing where it has no such setting.
    std::optional<std::vector<std::string>> gnomeKeys(const std::string& setting)
    {
        constexpr auto schemaName = "org.gnome.mutter.wayland.keybindings";
        auto* source = g_settings_schema_source_get_default();
        auto* schema = source ? g_settings_schema_source_lookup(source, schemaName, TRUE) : nullptr;
        const bool isThere = schema && g_settings_schema_has_key(schema, setting.c_str());
        if (schema)
            g_settings_schema_unref(schema);
        if (!isThere)
            return std::nullopt;
        const GObjectOwner<GSettings> settings(g_settings_new(schemaName));
        auto** values = g_settings_get_strv(settings.get(), setting.c_str());
        std::vector<std::string> keys;
        for (auto** value = values; *value; ++value) {
            if (**value)
                keys.emplace_back(*value);
        }
        g_strfreev(values);
        return keys;
    }

    std::optional<bool> gnomeSwitchesTerminals()
    {
        for (int number = 1; number <= terminals; ++number) {
            const auto keys = gnomeKeys(fmt::format("switch-to-session-{}", number));
            if (!keys || !keys->empty())
                return keys ? std::optional(true) : std::nullopt;
        }
        return false;
    }

} // namespace

void surveyWayland(GdkDisplay* display, LockFacts& facts)
{
    const auto offers = [display](const char* interface) {
        return gdk_wayland_display_query_registry(display, interface) != FALSE;
    };
    const int compositor
        = peerProcess(wl_display_get_fd(gdk_wayland_display_get_wl_display(display)));
    facts.displayServer = processName(compositor);
    facts.serverReadsInput = readsInputDevices(compositor);
    auto& wayland = facts.wayland;
    wayland.isSingleWindow = isSingleWindowCompositor();
    wayland.offersShortcutsInhibitor = hasShortcutsInhibitor();
    wayland.offersIdleInhibitor = offers("zwp_idle_inhibit_manager_v1");
    if (facts.displayServer == "gnome-shell") {
        wayland.switchesTerminals = gnomeSwitchesTerminals();
        wayland.uninhibitableBindings = gnomeKeys("restore-shortcuts");
    } else if (facts.displayServer == "cage") {
        wayland.switchesTerminals = cageSwitchesTerminals(processArguments(compositor));
    } else {
        wayland.switchesTerminals = layoutSwitchesTerminals(display);
    }
    if (const auto* socket = std::getenv("SWAYSOCK"); socket && facts.displayServer == "sway")
        wayland.uninhibitableBindings = uninhibitableSwayBindings(socket);
}

} // namespace quillox
