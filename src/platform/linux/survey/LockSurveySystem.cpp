#include "platform/linux/survey/Alarm.h"
#include "platform/linux/survey/LockSurveyLinux.h"
#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/GlibOwner.h"

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
    constexpr std::array keySettings { "HandlePowerKey", "HandleSuspendKey", "HandleHibernateKey",
        "HandleLidSwitch" };
    constexpr std::array inhibitors { "idle", "handle-power-key", "handle-suspend-key",
        "handle-hibernate-key", "handle-lid-switch" };

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

    /// The last word of systemd's files wins, as it does for systemd.
    std::string systemdSetting(std::string_view name)
    {
        std::map<std::string, fs::path> fragments;
        for (const auto* folder : { "/usr/lib", "/usr/local/lib", "/run", "/etc" }) {
            std::error_code error;
            for (const auto& entry :
                fs::directory_iterator(fs::path(folder) / "systemd/system.conf.d", error)) {
                if (entry.path().extension() == ".conf")
                    fragments[entry.path().filename()] = entry.path();
            }
        }
        std::string value;
        const auto read = [&](const fs::path& path) {
            std::ifstream file(path);
            for (std::string line; std::getline(file, line);) {
                const auto equals = line.find('=');
                if (equals != std::string::npos && line.substr(0, equals) == name)
                    value = line.substr(equals + 1);
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
            for (const auto* name : keySettings) {
                const auto value = text(values.get(), name);
                if (value != "ignore")
                    facts.keyActions.push_back(
                        std::string(name) + "=" + (value.empty() ? "unknown" : value));
            }
            facts.idleAction = text(values.get(), "IdleAction");
            for (const auto* kind : inhibitors) {
                if (!grants(kind))
                    facts.refusedInhibitors.emplace_back(kind);
            }
            return facts;
        }

    private:
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

} // namespace

void surveySystem(LockFacts& facts)
{
    facts.sysrq = sysrqSetting();
    facts.ignoresCtrlAltDelete = ignoresCtrlAltDelete();
    facts.isRoot = geteuid() == 0;
    facts.hasSandbox = isInstalled("bwrap") && isInstalled("xdg-dbus-proxy");
    const GObjectOwner<GCancellable> limit(g_cancellable_new());
    const Alarm alarm(busPatience, [&limit] { g_cancellable_cancel(limit.get()); });
    facts.login = LoginService(limit.get()).facts();
}

} // namespace quillox
