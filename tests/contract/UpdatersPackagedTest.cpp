#include "app/QuilloxApp.h"
#include "contract/AgentRig.h"
#include "fakes/FakeApplication.h"
#include "platform/linux/service/UpdatersPackaged.h"
#include "platform/linux/system/GlibOwner.h"

#include <gio/gio.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    struct NobodyAsked final : Updater::Delegate {
        bool supportsGentleScheduledUpdateReminders() const override { return true; }
        bool shouldHandleShowingScheduledUpdate() const override { return false; }
        bool willInstallUpdateOnQuit(std::function<void()>) override { return false; }
    };

    /// A package service on a bus of its own.
    class FakePackageKit {
    public:
        std::vector<std::string> updates;
        std::optional<unsigned> exit; ///< None: it never finishes.
        int transactions = 0;

        explicit FakePackageKit(const char* address)
            : m_bus(g_dbus_connection_new_for_address_sync(address,
                static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                    | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, nullptr, nullptr))
        {
            constexpr auto xml = R"(<node>
                <interface name='org.freedesktop.PackageKit'>
                  <method name='CreateTransaction'><arg type='o' direction='out'/></method>
                </interface>
                <interface name='org.freedesktop.PackageKit.Transaction'>
                  <method name='GetUpdates'><arg type='t' direction='in'/></method>
                </interface></node>)";
            m_interfaces = g_dbus_node_info_new_for_xml(xml, nullptr);
            static const GDBusInterfaceVTable table { handleCall, nullptr, nullptr, {} };
            for (const auto& [path, index] :
                { std::pair("/org/freedesktop/PackageKit", 0), { "/1_a", 1 } })
                g_dbus_connection_register_object(m_bus.get(), path,
                    m_interfaces->interfaces[index], &table, this, nullptr, nullptr);
        }
        ~FakePackageKit()
        {
            g_dbus_node_info_unref(m_interfaces);
            g_dbus_connection_close_sync(m_bus.get(), nullptr, nullptr);
        }

        void takeName()
        {
            constexpr auto flags = G_BUS_NAME_OWNER_FLAGS_NONE;
            g_bus_own_name_on_connection(m_bus.get(), "org.freedesktop.PackageKit", flags, nullptr,
                nullptr, nullptr, nullptr);
            const GVariantOwner reply(g_dbus_connection_call_sync(m_bus.get(),
                "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId", nullptr, nullptr,
                G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr));
        }

    private:
        static void handleCall(GDBusConnection*, const char*, const char*, const char*,
            const char* method, GVariant*, GDBusMethodInvocation* call, gpointer data)
        {
            auto& self = *static_cast<FakePackageKit*>(data);
            if (std::string_view(method) == "CreateTransaction") {
                ++self.transactions;
                return g_dbus_method_invocation_return_value(call, g_variant_new("(o)", "/1_a"));
            }
            g_dbus_method_invocation_return_value(call, nullptr);
            for (const auto& update : self.updates)
                self.emit("Package", g_variant_new("(uss)", 5u, update.c_str(), "a package"));
            if (self.exit)
                self.emit("Finished", g_variant_new("(uu)", *self.exit, 40u));
        }

        void emit(const char* signal, GVariant* parameters)
        {
            g_dbus_connection_emit_signal(m_bus.get(), nullptr, "/1_a",
                "org.freedesktop.PackageKit.Transaction", signal, parameters, nullptr);
        }

        GObjectOwner<GDBusConnection> m_bus;
        GDBusNodeInfo* m_interfaces = nullptr;
    };

    TEST(UpdatersPackagedTest, ManualCheckTellsWhatThePackageManagerKnows)
    {
        const GObjectOwner<GTestDBus> bus(g_test_dbus_new(G_TEST_DBUS_NONE));
        g_test_dbus_up(bus.get());
        ::setenv("DBUS_SYSTEM_BUS_ADDRESS", g_test_dbus_get_bus_address(bus.get()), 1);
        FakePackageKit packageKit(g_test_dbus_get_bus_address(bus.get()));

        AgentRig rig({});
        FakeDialogs dialogs;
        UpdatersPackaged updaters(dialogs, 300ms);
        NobodyAsked delegate;
        const auto updater = updaters.makeUpdater(delegate);
        updater->setAutomaticallyChecksForUpdates(true);
        updater->setAutomaticallyDownloadsUpdates(true);
        updater->startUpdater();
        const auto told = [&] {
            dialogs.alerts.clear();
            updater->checkForUpdates();
            updater->checkForUpdates();
            EXPECT_TRUE(dialogs.alerts.empty()) << "not from within the call";
            EXPECT_TRUE(rig.waitFor([&] { return !dialogs.alerts.empty(); }));
            updater->checkForUpdates(); // The answer is still shown.
            dialogs.press(0);
            EXPECT_EQ(dialogs.alerts.size(), 1u);
            return dialogs.alerts.at(0);
        };
        constexpr auto withTheSystem = "Updates come with the system.";
        EXPECT_EQ(told().message, withTheSystem);
        EXPECT_EQ(packageKit.transactions, 0) << "nobody asked for anything";

        packageKit.takeName();
        const struct {
            std::vector<std::string> updates;
            std::optional<unsigned> exit;
            const char* message;
        } rows[] {
            { { "quillox;9.1.0;amd64;main" }, 1, "Quillox 9.1.0 is available." },
            { { "zsh;5;all;", "quillox;2:9.1-rc1-3;amd64;x" }, 1, "Quillox 9.1-rc1 is available." },
            { { "quillox-data;9.1.0;all;x", "zsh;5;all;x" }, 1, "Quillox is up to date." },
            { {}, 1, "Quillox is up to date." },
            { { "quillox;9.1.0;amd64;x" }, 2, withTheSystem },
            { {}, std::nullopt, withTheSystem },
        };
        for (const auto& row : rows) {
            packageKit.updates = row.updates;
            packageKit.exit = row.exit;
            const auto alert = told();
            EXPECT_EQ(alert.message, row.message);
            EXPECT_NE(alert.informativeText.find(QuilloxApp::version()), std::string::npos);
            EXPECT_EQ(alert.buttons.size(), 1u);
        }
        EXPECT_EQ(packageKit.transactions, 6);
        g_test_dbus_stop(bus.get());
    }

} // namespace

} // namespace quillox
