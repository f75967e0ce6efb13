#include "platform/linux/lock/DesktopShortcuts.h"

#include <algorithm>
#include <array>

namespace quillox {

namespace {

    struct SchemaUnref {
        void operator()(GSettingsSchema* schema) const { g_settings_schema_unref(schema); }
    };
    using SchemaOwner = std::unique_ptr<GSettingsSchema, SchemaUnref>;

    struct SchemaKeyUnref {
        void operator()(GSettingsSchemaKey* key) const { g_settings_schema_key_unref(key); }
    };
    using SchemaKeyOwner = std::unique_ptr<GSettingsSchemaKey, SchemaKeyUnref>;

    enum HotKey : std::int32_t {
        pictureToFile = 28,
        pictureToClipboard = 29,
        areaToFile = 30,
        areaToClipboard = 31,
        captureOptions = 184,
        search = 64,
        fileSearch = 65,
    };

    constexpr auto shell = "org.gnome.shell.keybindings";
    constexpr auto mutter = "org.gnome.mutter";
    constexpr auto mutterKeys = "org.gnome.mutter.keybindings";
    constexpr auto mutterWayland = "org.gnome.mutter.wayland.keybindings";
    constexpr auto mediaKeys = "org.gnome.settings-daemon.plugins.media-keys";
    constexpr auto windowKeys = "org.gnome.desktop.wm.keybindings";
    constexpr auto accessibility = "org.gnome.desktop.a11y.keyboard";

    struct Row {
        HotKey number;
        const char* schema;
        std::vector<const char*> keys;
    };

    /// Names of several versions of the desktop. "-static" are those that its own control panel
    /// does not offer. The first five numbers take pictures, 64 is what searches and starts
    /// programs, 65 what opens or leads to other programs, windows and sessions.
    const std::vector<Row>& table()
    {
        static const std::vector<Row> rows {
            { pictureToFile, shell, { "screenshot", "screenshot-window" } },
            { pictureToFile, mediaKeys, { "screenshot", "window-screenshot" } },
            { pictureToClipboard, mediaKeys, { "screenshot-clip", "window-screenshot-clip" } },
            { areaToFile, mediaKeys, { "area-screenshot" } },
            { areaToClipboard, mediaKeys, { "area-screenshot-clip" } },
            { captureOptions, shell,
                { "show-screenshot-ui", "show-screen-recording-ui", "toggle-recording" } },
            { captureOptions, mediaKeys, { "screencast" } },
            { search, mutter, { "overlay-key" } },
            { search, shell,
                { "toggle-overview", "toggle-application-view", "open-application-menu",
                    "shift-overview-up", "shift-overview-down", "toggle-message-tray",
                    "toggle-quick-settings", "focus-active-notification" } },
            { search, windowKeys,
                { "panel-main-menu", "panel-run-dialog", "activate-window-menu" } },
            { search, mediaKeys, { "search", "search-static" } },
            { fileSearch, shell,
                { "switch-to-application-1", "switch-to-application-2", "switch-to-application-3",
                    "switch-to-application-4", "switch-to-application-5", "switch-to-application-6",
                    "switch-to-application-7", "switch-to-application-8", "switch-to-application-9",
                    "open-new-window-application-1", "open-new-window-application-2",
                    "open-new-window-application-3", "open-new-window-application-4",
                    "open-new-window-application-5", "open-new-window-application-6",
                    "open-new-window-application-7", "open-new-window-application-8",
                    "open-new-window-application-9" } },
            { fileSearch, windowKeys,
                { "switch-applications", "switch-applications-backward", "switch-windows",
                    "switch-windows-backward", "switch-group", "switch-group-backward",
                    "switch-panels", "switch-panels-backward", "cycle-windows",
                    "cycle-windows-backward", "cycle-group", "cycle-group-backward", "cycle-panels",
                    "cycle-panels-backward", "switch-to-workspace-left",
                    "switch-to-workspace-right", "switch-to-workspace-up",
                    "switch-to-workspace-down", "switch-to-workspace-last", "switch-to-workspace-1",
                    "switch-to-workspace-2", "switch-to-workspace-3", "switch-to-workspace-4",
                    "switch-to-workspace-5", "switch-to-workspace-6", "switch-to-workspace-7",
                    "switch-to-workspace-8", "switch-to-workspace-9", "switch-to-workspace-10",
                    "switch-to-workspace-11", "switch-to-workspace-12", "switch-input-source",
                    "switch-input-source-backward", "show-desktop", "minimize", "close" } },
            { fileSearch, mutterKeys, { "switch-monitor", "rotate-monitor" } },
            { fileSearch, mutterWayland,
                { "restore-shortcuts", "switch-to-session-1", "switch-to-session-2",
                    "switch-to-session-3", "switch-to-session-4", "switch-to-session-5",
                    "switch-to-session-6", "switch-to-session-7", "switch-to-session-8",
                    "switch-to-session-9", "switch-to-session-10", "switch-to-session-11",
                    "switch-to-session-12" } },
            { fileSearch, mediaKeys,
                { "custom-keybindings", "calculator", "calculator-static", "control-center",
                    "control-center-static", "email", "email-static", "help", "home", "home-static",
                    "logout", "magnifier", "media", "media-static", "on-screen-keyboard",
                    "screenreader", "screensaver", "screensaver-static", "terminal", "www",
                    "www-static", "power", "power-static", "hibernate", "hibernate-static",
                    "suspend", "suspend-static" } },
            // Shift pressed five times asks in a dialog otherwise.
            { fileSearch, accessibility, { "enable" } },
        };
        return rows;
    }

    bool isListed(const TakenSetting& setting)
    {
        return std::any_of(table().begin(), table().end(), [&setting](const Row& row) {
            return row.schema == setting.schema
                && std::find(row.keys.begin(), row.keys.end(), setting.key) != row.keys.end();
        });
    }

    SchemaOwner findSchema(const char* name)
    {
        // The default source is missing when nothing at all is installed.
        auto* source = g_settings_schema_source_get_default();
        SchemaOwner schema(source ? g_settings_schema_source_lookup(source, name, TRUE) : nullptr);
        // One without a path would have to be told it.
        if (schema && !g_settings_schema_get_path(schema.get()))
            schema.reset();
        return schema;
    }

    SchemaKeyOwner findKey(GSettings* settings, const char* name)
    {
        GSettingsSchema* schema = nullptr;
        g_object_get(settings, "settings-schema", &schema, nullptr);
        const SchemaOwner owner(schema);
        if (!schema || !g_settings_schema_has_key(schema, name))
            return nullptr;
        return SchemaKeyOwner(g_settings_schema_get_key(schema, name));
    }

    /// What binds no key; none for a type that no shortcut has.
    GVariantOwner offValue(const GVariantType* type)
    {
        const auto is = [type](const GVariantType* other) {
            return g_variant_type_equal(type, other) != FALSE;
        };
        auto* value = is(G_VARIANT_TYPE_STRING_ARRAY) ? g_variant_new_strv(nullptr, 0)
            : is(G_VARIANT_TYPE_STRING)               ? g_variant_new_string("")
            : is(G_VARIANT_TYPE_BOOLEAN)              ? g_variant_new_boolean(FALSE)
                                                      : nullptr;
        return GVariantOwner(value ? g_variant_ref_sink(value) : nullptr);
    }

    bool isOff(GSettings* settings, const char* key)
    {
        const GVariantOwner present(g_settings_get_value(settings, key));
        const auto off = offValue(g_variant_get_type(present.get()));
        return !off || g_variant_equal(present.get(), off.get());
    }

} // namespace

bool namesDesktop(std::string_view desktops, std::string_view desktop)
{
    for (std::size_t begin = 0; begin <= desktops.size();) {
        const auto end = std::min(desktops.find(':', begin), desktops.size());
        if (desktops.substr(begin, end - begin) == desktop)
            return true;
        begin = end + 1;
    }
    return false;
}

DesktopShortcuts::DesktopShortcuts(std::string_view desktops)
{
    constexpr std::array<std::string_view, 3> builtOnGnome { "GNOME", "Unity", "Budgie" };
    const bool isGnome = std::any_of(builtOnGnome.begin(), builtOnGnome.end(),
        [desktops](std::string_view desktop) { return namesDesktop(desktops, desktop); });
    m_isAvailable = isGnome && std::any_of(table().begin(), table().end(), [](const Row& row) {
        return findSchema(row.schema) != nullptr;
    });
}

GSettings* DesktopShortcuts::settings(const std::string& schema)
{
    auto& settings = m_settings[schema];
    if (!settings) {
        if (const auto found = findSchema(schema.c_str()))
            settings.reset(g_settings_new_full(found.get(), nullptr, nullptr));
    }
    return settings.get();
}

std::vector<TakenSetting> DesktopShortcuts::find(std::int32_t number)
{
    std::vector<TakenSetting> found;
    for (const auto& row : table()) {
        auto* group = m_isAvailable && row.number == number ? settings(row.schema) : nullptr;
        if (!group)
            continue;
        for (const auto* key : row.keys) {
            if (!findKey(group, key) || isOff(group, key) || !g_settings_is_writable(group, key))
                continue;
            auto& taken = found.emplace_back(TakenSetting { number, row.schema, key, {} });
            if (const GVariantOwner value(g_settings_get_user_value(group, key)); value)
                taken.value = GTextOwner(g_variant_print(value.get(), TRUE)).get();
        }
    }
    return found;
}

void DesktopShortcuts::switchOff(const TakenSetting& setting)
{
    auto* group = isListed(setting) ? settings(setting.schema) : nullptr;
    const auto key = group ? findKey(group, setting.key.c_str()) : nullptr;
    const auto off = key ? offValue(g_settings_schema_key_get_value_type(key.get())) : nullptr;
    if (off && !isOff(group, setting.key.c_str()))
        g_settings_set_value(group, setting.key.c_str(), off.get());
}

void DesktopShortcuts::putBack(const TakenSetting& setting)
{
    auto* group = isListed(setting) ? settings(setting.schema) : nullptr;
    const auto key = group ? findKey(group, setting.key.c_str()) : nullptr;
    if (!key)
        return;
    if (!setting.value) {
        g_settings_reset(group, setting.key.c_str());
        return;
    }
    const auto* type = g_settings_schema_key_get_value_type(key.get());
    const GVariantOwner value(
        g_variant_parse(type, setting.value->c_str(), nullptr, nullptr, nullptr));
    if (value && g_settings_schema_key_range_check(key.get(), value.get()))
        g_settings_set_value(group, setting.key.c_str(), value.get());
}

} // namespace quillox
