#include "contract/AgentRig.h"
#include "platform/linux/service/AgentDefinition.h"
#include "platform/linux/service/RestartingParent.h"
#include "platform/linux/system/GlibOwner.h"

#include <gio/gdesktopappinfo.h>

#include <sys/socket.h>
#include <sys/un.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using enum AgentService::Status;

    AgentPlaces placesIn(const std::filesystem::path& home, const std::string& application = "app")
    {
        return { home / application / "quillox", home / "config", home / "run" };
    }

    /// Somebody who may accept, and never says a word.
    FileDescriptor listenAt(const std::filesystem::path& path)
    {
        std::filesystem::create_directories(path.parent_path());
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.string().copy(address.sun_path, sizeof address.sun_path - 1);
        FileDescriptor listener(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_EQ(::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(listener.get(), 8), 0);
        return listener;
    }

    void putProgram(const std::filesystem::path& path, const std::string& script)
    {
        put(path, "#!/bin/sh\n" + script);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }

    TEST(AgentServicesAutostartTest, EntryIsThereWhileItIsOnAndStartsTheProgram)
    {
        const TemporaryFolder home;
        AgentRig rig(placesIn(home.path, R"(My "$HOME" `id` \ 'app')"));
        EXPECT_TRUE(rig.setEnabled(false).empty());
        for (const auto isOn : { true, true, false, false, true }) {
            EXPECT_TRUE(rig.setEnabled(isOn).empty());
            EXPECT_EQ(rig.status(), isOn ? Enabled : NotRegistered);
            EXPECT_EQ(std::filesystem::exists(rig.entry()), isOn);
        }
        // As a session starts it.
        const auto told = home.path / "told";
        putProgram(rig.places.executable, "echo \"$@\" >" + told.string() + "\n");
        const GObjectOwner<GDesktopAppInfo> entry(
            g_desktop_app_info_new_from_filename(rig.entry().c_str()));
        ASSERT_TRUE(entry);
        EXPECT_TRUE(g_app_info_launch(G_APP_INFO(entry.get()), nullptr, nullptr, nullptr));
        EXPECT_TRUE(rig.waitFor([&] { return contentsOf(told) == "--keep-alive\n"; }));

        for (const auto* line : { "Hidden=true\n", "X-GNOME-Autostart-enabled=false\n" }) {
            EXPECT_EQ(rig.ask('+'), "");
            const auto text = contentsOf(rig.entry());
            put(rig.entry(), text + line);
            EXPECT_EQ(rig.status(), NotRegistered) << line;
        }
    }

    TEST(AgentServicesAutostartTest, LauncherIsStartedWhereThereIsOne)
    {
        const TemporaryFolder home;
        auto places = placesIn(home.path, "app/versions/1.2.0");
        EXPECT_EQ(AgentPlaces::launcherOf(places.executable), "");
        putProgram(home.path / "app/quillox", "");
        EXPECT_EQ(AgentPlaces::launcherOf(home.path / "app/bin/quillox"), "");
        places.launcher = AgentPlaces::launcherOf(places.executable);
        EXPECT_EQ(places.launcher, home.path / "app/quillox");
        AgentRig rig(places);
        EXPECT_EQ(rig.ask('+'), "");
        EXPECT_NE(contentsOf(rig.entry()).find(places.launcher + "\" --keep"), std::string::npos);
        put(home.path / "app/versions/1.2.0/resources/agent.service.in",
            "ExecStart=@QUILLOX_EXECUTABLE@");
        EXPECT_NE(
            findUnitDefinition(places, "agent.service").text.find(":\"" + places.launcher + "\""),
            std::string::npos);
    }

    TEST(AgentServicesAutostartTest, FailureIsOneLine)
    {
        const TemporaryFolder home;
        AgentRig rig(placesIn(home.path));
        put(rig.places.configFolder, "a file where a folder belongs");
        const auto lines = rig.setEnabled(true);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_TRUE(lines[0].starts_with("Quillox: watchdog update failed: ")) << lines[0];
        EXPECT_NE(lines[0].find("config"), std::string::npos) << lines[0];

        AgentRig cryptic(placesIn(home.path, "100%u"));
        EXPECT_NE(cryptic.ask('+').find("100%u"), std::string::npos);
    }

    TEST(AgentServicesAutostartTest, ManagerThatNeverAnswersHoldsNothingUp)
    {
        const TemporaryFolder home;
        AgentRig rig(placesIn(home.path));
        const auto listener = listenAt(home.path / "run/bus");
        int ticks = 0;
        const auto ticking = rig.loop.every(10ms, [&] { ++ticks; });
        EXPECT_EQ(rig.status(), NotFound);
        EXPECT_NE(rig.ask('+').find("does not answer"), std::string::npos);
        EXPECT_NE(rig.ask('-').find("does not answer"), std::string::npos);
        EXPECT_FALSE(std::filesystem::exists(rig.entry())) << "nobody knows whether it may";
        EXPECT_GT(ticks, 30);

        bool isGone = false;
        rig.agent->status([&](auto) { EXPECT_FALSE(isGone); });
        rig.agent->registerAgent([&](const auto&) { EXPECT_FALSE(isGone); });
        g_main_context_iteration(nullptr, FALSE);
        rig.agent.reset();
        isGone = true;
        const auto end = rig.loop.monotonicNow() + 400ms;
        EXPECT_TRUE(rig.waitFor([&] { return rig.loop.monotonicNow() > end; }));
    }

    TEST(RestartingParentTest, KeepsAProgramAliveUntilItIsQuit)
    {
        const struct {
            const char* life; ///< Of a program; $n counts its lives.
            bool hasDisplay;
            int code;
            std::size_t lives;
        } rows[] {
            { "exit 0", true, 0, 1 },
            { "[ $n = 7 ] && exit 0; [ $n = 5 ] && exit 3; kill -SEGV $$", true, 0, 7 },
            { "[ $n = 3 ] && exit 0; kill -KILL $$", true, 0, 3 },
            { "[ $n = 2 ] && exit 0; exec sleep 600", true, 0, 2 },
            { "kill -TERM $$", true, 0, 1 },
            { "trap 'exit 0' TERM; kill -TERM $PPID; while :; do sleep 0.01; done", true, 0, 1 },
            { "trap 'exit 4' TERM; kill -HUP $PPID; while :; do sleep 0.01; done", true, 1, 1 },
            { "exit 1", false, 1, 1 },
        };
        ::unsetenv("DISPLAY");
        for (const auto& row : rows) {
            const TemporaryFolder folder;
            const auto display = folder.path / "wayland-0";
            const auto listener = listenAt(row.hasDisplay ? display : folder.path / "other");
            ::setenv("WAYLAND_DISPLAY", display.c_str(), 1);
            const auto lives = folder.path / "lives";
            putProgram(folder.path / "program",
                "echo >>" + lives.string() + "; n=$(wc -l <" + lives.string() + ")\n" + row.life
                    + "\n");
            FakeSystemLog log;
            RestartingParent parent({ folder.path / "program" }, log, { 2s, 2ms });
            EXPECT_EQ(parent.run(), row.code) << row.life;
            EXPECT_EQ(contentsOf(lives), std::string(row.lives, '\n')) << row.life;
            EXPECT_EQ(log.lines().size(), row.hasDisplay ? row.lives - 1 : 1u) << row.life;
        }
    }

} // namespace

} // namespace quillox
