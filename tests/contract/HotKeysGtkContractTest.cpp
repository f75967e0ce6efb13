#include "fakes/FakeSystemLog.h"
#include "platform/linux/lock/PowerAssertionsLinux.h"
#include "platform/linux/lock/RestoreNote.h"
#include "platform/linux/lock/SymbolicHotKeysLinux.h"
#include "platform/linux/system/RunLoopGlib.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/wait.h>
#include <unistd.h>

// Last, since Xlib claims common words.
#include "platform/linux/lock/ErrorTrapX11.h"
#include <X11/XKBlib.h>
#include <X11/extensions/scrnsaver.h>

namespace quillox {

namespace {

    namespace fs = std::filesystem;

    const bool isChild = g_getenv("QUILLOX_TEST_CHILD") != nullptr;

    /// A settings store and a message bus of this test's own, made before `main`, since the toolkit
    /// keeps what it finds at its start. A child of this process uses the same.
    const fs::path folder = [] {
        if (isChild)
            return fs::path(g_getenv("GSETTINGS_SCHEMA_DIR"));
        const fs::path made = GTextOwner(g_dir_make_tmp("quillox-XXXXXX", nullptr)).get();
        std::ofstream(made / "test.gschema.xml") << R"(<schemalist>
            <schema id="org.gnome.shell.keybindings" path="/org/gnome/shell/keybindings/">
            <key name="show-screenshot-ui" type="as"><default>['Print']</default></key>
            <key name="toggle-overview" type="as"><default>['&lt;Super&gt;s']</default></key>
            </schema>
            </schemalist>)";
        if (std::system(("glib-compile-schemas " + made.string()).c_str()) != 0)
            std::abort();
        const std::string display = g_getenv("DISPLAY") ? g_getenv("DISPLAY") : "";
        auto* bus = g_test_dbus_new(G_TEST_DBUS_NONE); // It ends with the process.
        g_test_dbus_up(bus); // Takes DISPLAY out of the environment.
        g_setenv("DISPLAY", display.c_str(), TRUE);
        g_setenv("DBUS_SYSTEM_BUS_ADDRESS", g_test_dbus_get_bus_address(bus), TRUE);
        g_setenv("GSETTINGS_BACKEND", "keyfile", TRUE);
        for (const auto* variable : { "GSETTINGS_SCHEMA_DIR", "XDG_CONFIG_HOME" })
            g_setenv(variable, made.c_str(), TRUE);
        return made;
    }();

    bool waitFor(const std::function<bool()>& condition)
    {
        const auto deadline = g_get_monotonic_time() + 10 * G_USEC_PER_SEC;
        const auto wakeUp = g_timeout_add(
            10, [](gpointer) { return gboolean(TRUE); }, nullptr);
        while (!condition() && g_get_monotonic_time() < deadline)
            g_main_context_iteration(nullptr, TRUE);
        g_source_remove(wakeUp);
        return condition();
    }

    ::Display* server()
    {
        return gdk_x11_display_get_xdisplay(gdk_display_get_default());
    }

    struct KeyMaps {
        std::string bytes; ///< Every action of every key of every keyboard, and their controls.
        int serversOwn = 0; ///< How many are of the kinds that a run takes away.
    };

    KeyMaps keyMaps()
    {
        KeyMaps maps;
        const ErrorTrapX11 trap(gdk_display_get_default()); // Not every device is a keyboard.
        for (unsigned device = 2; device < 20; ++device) {
            auto* map = XkbGetMap(server(), XkbAllMapComponentsMask, device);
            if (!map || XkbGetControls(server(), XkbAllControlsMask, map) != Success)
                continue;
            maps.bytes += "/" + std::to_string(map->ctrls->enabled_ctrls);
            maps.serversOwn += (map->ctrls->enabled_ctrls & XkbAccessXKeysMask) != 0;
            for (int key = map->min_key_code; key <= map->max_key_code; ++key) {
                const int count = XkbKeyHasActions(map, key) ? XkbKeyNumActions(map, key) : 0;
                for (int index = 0; index < count; ++index) {
                    const auto* action = XkbKeyAction(map, key, index);
                    maps.bytes.append(reinterpret_cast<const char*>(action), sizeof *action);
                    maps.serversOwn += action->type == XkbSA_Terminate
                        || action->type == XkbSA_SwitchScreen
                        || action->type == XkbSA_XFree86Private;
                }
            }
            XkbFreeKeyboard(map, XkbAllComponentsMask, True);
        }
        return maps;
    }

    bool areServerKeysOff()
    {
        return keyMaps().serversOwn == 0;
    }

    class HotKeysGtkTest : public testing::Test {
    protected:
        const fs::path path = folder / "state/Quillox/restore.json";
        RunLoopGlib runLoop;
        FakeSystemLog log;
        RestoreNote note { path.string(), runLoop, log };
        GObjectOwner<GSettings> keys { g_settings_new("org.gnome.shell.keybindings") };
        Glib::RefPtr<Gtk::Application> application = Gtk::Application::create();
        PowerAssertionsLinux power { note, *application, nullptr, log };

        void SetUp() override
        {
            if (isChild)
                return;
            setKeyMap();
            const std::array<const char*, 2> users { "<Alt>o", nullptr };
            g_settings_set_strv(keys.get(), "toggle-overview", users.data());
            ASSERT_GT(keyMaps().serversOwn, 12);
            ASSERT_EQ(settings(), "- ['<Alt>o'] ");
        }
        static void TearDownTestSuite() { fs::remove_all(folder); }

        static void setKeyMap()
        {
            ASSERT_EQ(std::system("setxkbmap -option '' -option terminate:ctrl_alt_bksp"), 0);
            XkbChangeEnabledControls(
                server(), XkbUseCoreKbd, XkbAccessXKeysMask, XkbAccessXKeysMask);
            XSync(server(), False);
        }
        static void setAll(SymbolicHotKeys& hotKeys, bool isEnabled)
        {
            for (const int number : { 28, 29, 30, 31, 184, 64, 65 })
                EXPECT_EQ(hotKeys.setEnabled(number, isEnabled), 0);
        }
        /// What the user has set, "-" for nothing.
        std::string settings() const
        {
            std::string text;
            for (const auto* key : { "show-screenshot-ui", "toggle-overview" }) {
                const GVariantOwner value(g_settings_get_user_value(keys.get(), key));
                text += value ? GTextOwner(g_variant_print(value.get(), FALSE)).get() : "-";
                text += " ";
            }
            return text;
        }
        bool isSealed() const { return areServerKeysOff() && settings() == "[] [] "; }
    };

    TEST_F(HotKeysGtkTest, WhatNoGrabStopsIsOffUntilItIsPutBackExactly)
    {
        const auto before = keyMaps().bytes;
        SymbolicHotKeysLinux hotKeys(note, runLoop, log, "ubuntu:GNOME");
        hotKeys.setEnabled(184, false);
        EXPECT_TRUE(waitFor(areServerKeysOff));
        EXPECT_EQ(settings(), "[] ['<Alt>o'] "); // Each setting belongs to its number.
        setAll(hotKeys, false);
        EXPECT_TRUE(waitFor([&] { return isSealed(); }));

        setKeyMap(); // Everything is in the new map.
        ASSERT_FALSE(areServerKeysOff());
        EXPECT_TRUE(waitFor(areServerKeysOff));

        setAll(hotKeys, true);
        EXPECT_TRUE(waitFor([&] { return settings() == "- ['<Alt>o'] " && !fs::exists(path); }));
        EXPECT_TRUE(keyMaps().bytes == before);
    }

    TEST_F(HotKeysGtkTest, WhatAKilledProcessLeftIsPutBackExactly)
    {
        SymbolicHotKeysLinux hotKeys(note, runLoop, log, "GNOME");
        if (isChild) {
            setAll(hotKeys, false);
            waitFor([] { return false; });
            return;
        }
        const auto before = keyMaps().bytes;
        const pid_t child = fork();
        if (child == 0) {
            g_setenv("QUILLOX_TEST_CHILD", "1", TRUE);
            execl("/proc/self/exe", "child", "--gtest_filter=*WhatAKilledProcessLeft*", nullptr);
            _exit(1);
        }
        EXPECT_TRUE(waitFor([&] { return isSealed(); }));
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        EXPECT_TRUE(isSealed()); // None of it goes with the process.

        note.load();
        hotKeys.restoreAfterCrash();
        EXPECT_TRUE(keyMaps().bytes == before);
        EXPECT_EQ(settings(), "- ['<Alt>o'] ");
        EXPECT_TRUE(waitFor([&] { return !fs::exists(path); }));

        std::ofstream(path) << R"({"settings": [{"number": 28}]})"; // Damaged: set aside.
        note.load();
        EXPECT_EQ(log.lines().size(), 1U);
        EXPECT_TRUE(fs::exists(path.string() + ".damaged") && !fs::exists(path));
    }

    TEST_F(HotKeysGtkTest, TheScreenSaverStaysOffWhileThereIsAnAssertion)
    {
        XSetScreenSaver(server(), 1, 0, PreferBlanking, DefaultExposures);
        for (const bool isKeptOn : { false, true, false }) {
            const auto assertion = power.create(
                isKeptOn ? "PreventUserIdleDisplaySleep" : "PreventSystemSleep", 255, "why");
            EXPECT_EQ(assertion.result, isKeptOn ? 0 : -536870201);
            XResetScreenSaver(server());
            XScreenSaverInfo info {};
            EXPECT_TRUE(waitFor([&info] {
                XScreenSaverQueryInfo(server(), DefaultRootWindow(server()), &info);
                return info.idle > 2000 || info.state == ScreenSaverOn;
            }));
            EXPECT_EQ(info.state == ScreenSaverOn, !isKeptOn);
            power.release(assertion.identifier);
        }
        XSetScreenSaver(server(), 0, 0, PreferBlanking, DefaultExposures);
    }

    std::mutex callsMutex;
    std::string calls; ///< Of the services of the session.

    /// Called on a thread of the bus library.
    GDBusMessage* answerCall(
        GDBusConnection* bus, GDBusMessage* call, gboolean isIncoming, gpointer)
    {
        if (!isIncoming || g_dbus_message_get_message_type(call) != G_DBUS_MESSAGE_TYPE_METHOD_CALL)
            return call;
        const GObjectOwner<GDBusMessage> owner(call);
        const GObjectOwner<GDBusMessage> reply(g_dbus_message_new_method_reply(call));
        const std::string member = g_dbus_message_get_member(call);
        if (member == "Inhibit")
            g_dbus_message_set_body(reply.get(), g_variant_new("(u)", 4711U));
        g_dbus_connection_send_message(
            bus, reply.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE, nullptr, nullptr);
        const std::lock_guard lock(callsMutex);
        calls += member + GTextOwner(g_variant_print(g_dbus_message_get_body(call), FALSE)).get();
        return nullptr;
    }

    void expectCalls(const std::vector<const char*>& expected)
    {
        EXPECT_TRUE(waitFor([&] {
            const std::lock_guard lock(callsMutex);
            return std::all_of(expected.begin(), expected.end(),
                [](const char* call) { return calls.find(call) != std::string::npos; });
        })) << calls;
    }

    TEST_F(HotKeysGtkTest, ServicesOfTheSessionAreAskedAndToldWhenItIsOver)
    {
        const GObjectOwner<GDBusConnection> bus(
            g_dbus_connection_new_for_address_sync(g_getenv("DBUS_SESSION_BUS_ADDRESS"),
                GDBusConnectionFlags(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
                    | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, nullptr, nullptr));
        for (const auto* name :
            { "org.freedesktop.login1", "org.freedesktop.ScreenSaver", "org.kde.kglobalaccel" })
            g_bus_own_name_on_connection(
                bus.get(), name, G_BUS_NAME_OWNER_FLAGS_NONE, nullptr, nullptr, nullptr, nullptr);
        g_dbus_connection_flush_sync(bus.get(), nullptr, nullptr);
        g_dbus_connection_add_filter(bus.get(), answerCall, nullptr, nullptr);
        auto hotKeys = std::make_unique<SymbolicHotKeysLinux>(note, runLoop, log, "KDE");
        const auto assertion = power.create("PreventUserIdleDisplaySleep", 255, "why");
        setAll(*hotKeys, false);
        expectCalls({ "Inhibit('Quillox', 'why')", "blockGlobalShortcuts(true,)",
            "Inhibit('idle', 'Quillox', 'why', 'block')" });
        power.release(assertion.identifier);
        hotKeys.reset();
        expectCalls({ "UnInhibit(4711,)", "blockGlobalShortcuts(false,)" });
        EXPECT_TRUE(note.contents().hasBlockedGlobalShortcuts); // Nobody heard the answer.
        SymbolicHotKeysLinux next(note, runLoop, log, "KDE");
        next.restoreAfterCrash();
        EXPECT_TRUE(waitFor([&] { return !fs::exists(path); }));
    }

} // namespace

} // namespace quillox
