#include "platform/linux/survey/Alarm.h"
#include "platform/linux/survey/LockSurveyLinux.h"
#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/GlibOwner.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <gio/gio.h>
#include <gio/gunixfdlist.h>
#include <map>
#include <unistd.h>

namespace quillox {

namespace {

    namespace fs = std::filesystem;
    using namespace std::chrono_literals;

    /// For the whole conversation with the login service, which takes some milliseconds.
    constexpr auto busPatience = 500ms;
    constexpr auto service = "org.freedesktop.login1";
    constexpr auto object = "/org/freedesktop/login1";
    constexpr auto manager = "org.freedesktop.login1.Manager";

    struct HardwareKey {
        const char* inhibitor;
        std::array<const char*, 2> settings; ///< Each may make it act.
    };
    constexpr std::array hardwareKeys {
        HardwareKey { "handle-power-key", { "HandlePowerKey", "HandlePowerKeyLongPress" } },
        HardwareKey { "handle-reboot-key", { "HandleRebootKey", "HandleRebootKeyLongPress" } },
        HardwareKey { "handle-suspend-key", { "HandleSuspendKey", "HandleSuspendKeyLongPress" } },
        HardwareKey {
            "handle-hibernate-key", { "HandleHibernateKey", "HandleHibernateKeyLongPress" } },
        HardwareKey { "handle-lid-switch", { "HandleLidSwitch", "HandleLidSwitchExternalPower" } },
    };

    std::optional<int> sysrqSetting()
    {
        const fs::path setting = "/proc/sys/kernel/sysrq";
        std::error_code error;
        if (!fs::exists(setting, error) && fs::exists(setting.parent_path(), error))
            return 0;
        int value = 0;
        if (std::ifstream(setting) >> value)
            return value;
        return std::nullopt;
    }

    std::string trimmed(const std::string& text)
    {
        constexpr auto blanks = " \t\r\n";
        const auto start = std::min(text.find_first_not_of(blanks), text.size());
        return text.substr(start, text.find_last_not_of(blanks) + 1 - start);
    }

    /// The last word of systemd's files wins, as it does for systemd.
    std::string systemdSetting(std::string_view name)
    {
        std::map<std::string, fs::path> fragments;
        for (const auto* folder : { "/usr/lib", "/usr/local/lib", "/run", "/etc" }) {
            std::error_code error;
            fs::directory_iterator entry(fs::path(folder) / "systemd/system.conf.d", error);
            for (; entry != fs::directory_iterator(); entry.increment(error)) {
                if (entry->path().extension() == ".conf")
                    fragments[entry->path().filename()] = entry->path();
            }
        }
        std::string value;
        const auto read = [&](const fs::path& path) {
            std::ifstream file(path);
            for (std::string line; std::getline(file, line);) {
                const auto equals = line.find('=');
                if (equals != std::string::npos && trimmed(line.substr(0, equals)) == name)
                    value = trimmed(line.substr(equals + 1));
            }
        };
        read("/etc/systemd/system.conf");
        for (const auto& fragment : fragments)
            read(fragment.second);
        return value;
    }

    std::optional<bool> ignoresCtrlAltDelete()
    {
        std::error_code error;
        if (!fs::exists("/run/systemd/system", error))
            return std::nullopt;
        bool isMasked = false;
        for (const auto* folder : { "/etc", "/run" }) {
            const auto unit = fs::path(folder) / "systemd/system/ctrl-alt-del.target";
            isMasked = isMasked || fs::read_symlink(unit, error) == "/dev/null";
        }
        return isMasked && systemdSetting("CtrlAltDelBurstAction") == "none";
    }

    /// Asks the login service and waits, at most until `limit` is cancelled.
    class LoginService {
    public:
        explicit LoginService(GCancellable* limit)
            : m_limit(limit)
            , m_bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, limit, nullptr))
        {
        }

        std::optional<LoginFacts> facts() const
        {
            const auto settings = m_bus ? call("org.freedesktop.DBus.Properties", "GetAll",
                                      g_variant_new("(s)", manager), G_VARIANT_TYPE("(a{sv})"))
                                        : GVariantOwner();
            if (!settings)
                return std::nullopt;
            const GVariantOwner values(g_variant_get_child_value(settings.get(), 0));
            LoginFacts facts;
            facts.idleAction = text(values.get(), "IdleAction");
            if (!grants("idle"))
                facts.refusedInhibitors.emplace_back("idle");
            for (const auto& key : hardwareKeys)
                survey(key, values.get(), facts);
            return facts;
        }

    private:
        /// A login service that is too old for a key has no setting for it, and does not act on it.
        void survey(const HardwareKey& key, GVariant* values, LoginFacts& facts) const
        {
            bool isKnown = false;
            for (const auto* name : key.settings) {
                const auto value = text(values, name);
                isKnown = isKnown || !value.empty();
                if (!value.empty() && value != "ignore")
                    facts.keyActions.push_back(std::string(name) + "=" + value);
            }
            if (isKnown && !grants(key.inhibitor))
                facts.refusedInhibitors.emplace_back(key.inhibitor);
        }

        GVariantOwner call(const char* interface, const char* method, GVariant* arguments,
            const GVariantType* reply, GUnixFDList** descriptors = nullptr) const
        {
            return GVariantOwner(g_dbus_connection_call_with_unix_fd_list_sync(m_bus.get(), service,
                object, interface, method, arguments, reply, G_DBUS_CALL_FLAGS_NO_AUTO_START, -1,
                nullptr, descriptors, m_limit, nullptr));
        }

        static std::string text(GVariant* values, const char* name)
        {
            const char* value = "";
            g_variant_lookup(values, name, "&s", &value);
            return value;
        }

        /// Takes the inhibitor and gives it back at once.
        bool grants(const char* kind) const
        {
            GUnixFDList* descriptors = nullptr;
            const auto answer = call(manager, "Inhibit",
                g_variant_new("(ssss)", kind, "Quillox", "Trying whether it is granted", "block"),
                G_VARIANT_TYPE("(h)"), &descriptors);
            const GObjectOwner<GUnixFDList> held(descriptors);
            return answer && held && g_unix_fd_list_get_length(held.get()) > 0;
        }

        GCancellable* m_limit;
        GObjectOwner<GDBusConnection> m_bus;
    };

    bool isInstalled(const char* program)
    {
        return GTextOwner(g_find_program_in_path(program)) != nullptr;
    }

    /// What keeps the engine's tool from a sandbox like those of pages; empty when nothing does.
    std::string sandboxFailure()
    {
        const char* const command[] { "bwrap", "--unshare-pid", "--unshare-uts", "--ro-bind", "/",
            "/", "--dev", "/dev", "--proc", "/proc", "true", nullptr };
        char* output = nullptr;
        int status = 0;
        GError* error = nullptr;
        const bool hasRun = g_spawn_sync(nullptr, const_cast<char**>(command), nullptr,
            static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL), nullptr,
            nullptr, nullptr, &output, &status, &error);
        const GTextOwner complaint(output);
        const GErrorOwner held(error);
        if (!hasRun)
            return error->message;
        return g_spawn_check_wait_status(status, nullptr) ? "" : trimmed(complaint.get());
    }

} // namespace

void surveySystem(LockFacts& facts)
{
    facts.sysrq = sysrqSetting();
    facts.ignoresCtrlAltDelete = ignoresCtrlAltDelete();
    facts.isRoot = geteuid() == 0;
    facts.hasSandbox = isInstalled("bwrap") && isInstalled("xdg-dbus-proxy");
    if (facts.hasSandbox)
        facts.sandboxFailure = sandboxFailure();
    const GObjectOwner<GCancellable> limit(g_cancellable_new());
    const Alarm alarm(busPatience, [&limit] { g_cancellable_cancel(limit.get()); });
    facts.login = LoginService(limit.get()).facts();
}

} // namespace quillox
