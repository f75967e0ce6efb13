#include "contract/AgentRig.h"
#include "platform/linux/service/WatchdogPing.h"

#include <glib-unix.h>

#include <cstdio>
#include <cstdlib>

namespace quillox {

namespace {

    using enum AgentService::Status;

    constexpr auto unit = "com.orvendal.quillox.watchdog.service";
    constexpr auto standInFolder = "QUILLOX_STAND_IN";
    constexpr auto confinement = "QUILLOX_CONFINED";

    /// This binary in the application's place: it notes that it lives, tells that it turns, and
    /// quits on SIGUSR1.
    const bool isStandIn = [] {
        const auto* folder = std::getenv(standInFolder);
        if (!folder)
            return false;
        RunLoopGlib runLoop;
        const WatchdogPing ping(runLoop);
        const auto quit = [](gpointer) -> gboolean { ::_exit(0); };
        g_unix_signal_add(SIGUSR1, quit, nullptr);
        std::ofstream(std::string(folder) + "/lives", std::ios::app) << ::getpid() << std::endl;
        for (;;)
            g_main_context_iteration(nullptr, TRUE);
    }();

    /// Runs the test that calls it once more, beside a service manager.
    void runConfined()
    {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const auto filter = std::string(test->test_suite_name()) + "." + test->name();
        const auto here = std::filesystem::path(__FILE__).parent_path();
        const auto definition = here.parent_path().parent_path() / "packaging" / unit;
        const auto command = "exec sh '" + (here / "beside-user-manager.sh").string() + "' '"
            + std::filesystem::read_symlink("/proc/self/exe").string() + "' " + filter + " '"
            + definition.string() + ".in' 2>&1";
        auto* output = ::popen(command.c_str(), "r");
        std::string text;
        for (int character; (character = std::fgetc(output)) != EOF;)
            text += static_cast<char>(character);
        const auto status = ::pclose(output);
        if (WIFEXITED(status) && WEXITSTATUS(status) == 77)
            GTEST_SKIP() << text;
        EXPECT_EQ(status, 0) << text;
    }

    bool systemctl(const std::string& what)
    {
        return std::system(("systemctl --user --quiet " + what).c_str()) == 0;
    }

    /// Beside the manager, with an application in a folder of its own whose name is a trial.
    struct Beside : AgentRig {
        explicit Beside(const std::string& folder = "My $HOME 100%u")
            : AgentRig({ "/mnt/home/" + folder + "/bin/quillox", "/mnt/home/.config", "/mnt/run" },
                AgentServicesLinux::defaultPatience)
        {
            put(places.executable,
                std::string("#!/bin/sh\nexport QUILLOX_STAND_IN=/mnt/home\n"
                            "exec /mnt/program\n"));
            std::filesystem::permissions(places.executable, std::filesystem::perms::owner_all);
            put(application() / "share/quillox" / (std::string(unit) + ".in"),
                contentsOf("/mnt/definition"));
            put(units() / "desktop.target", "[Unit]\nBindsTo=graphical-session.target\n");
            // Nobody has time to wait.
            put(units() / (std::string(unit) + ".d") / "quick.conf",
                "[Service]\nRestartSec=50ms\nWatchdogSec=4s\n");
        }
        ~Beside() { endSession(); }

        std::filesystem::path application() const
        {
            return std::filesystem::path(places.executable).parent_path().parent_path();
        }
        std::filesystem::path units() const { return places.configFolder + "/systemd/user"; }
        std::filesystem::path written() const { return units() / unit; }

        void beginSession()
        {
            ASSERT_TRUE(systemctl("daemon-reload && systemctl --user start desktop.target"));
        }
        void endSession() { systemctl("stop graphical-session.target desktop.target"); }

        std::vector<int> lives() const
        {
            std::vector<int> processes;
            std::ifstream file("/mnt/home/lives");
            for (int process; file >> process;)
                processes.push_back(process);
            return processes;
        }

        bool reachesLife(std::size_t count)
        {
            return waitFor([&] { return lives().size() >= count; });
        }
    };

    TEST(AgentServicesSystemdTest, RegistersWithTheManagerOfTheSession)
    {
        if (!std::getenv(confinement))
            return runConfined();
        Beside rig;
        rig.beginSession();
        EXPECT_EQ(rig.status(), NotRegistered);
        EXPECT_TRUE(rig.setEnabled(false).empty());
        for (const auto isOn : { true, true, false, false }) {
            EXPECT_TRUE(rig.setEnabled(isOn).empty());
            EXPECT_EQ(rig.status(), isOn ? Enabled : NotRegistered);
            EXPECT_EQ(systemctl(std::string("is-enabled ") + unit), isOn);
            EXPECT_EQ(std::filesystem::exists(rig.written()), isOn);
        }
        EXPECT_EQ(rig.ask('-'), "") << "also when there is nothing to do";
        EXPECT_EQ(rig.ask('+'), "");
        EXPECT_EQ(
            std::system(("systemd-analyze --user verify " + rig.written().string()).c_str()), 0);
        EXPECT_TRUE(rig.lives().empty()) << "this program runs; its agent is for the next session";
        EXPECT_EQ(rig.ask('-'), "");

        // The operator's own unit, and one that a package brought, serve as they are.
        put(rig.written(), "[Service]\nExecStart=/bin/true\n[Install]\nWantedBy=default.target\n");
        EXPECT_EQ(rig.ask('+') + rig.ask('-'), "");
        EXPECT_TRUE(std::filesystem::remove(rig.written()));
        put(rig.application() / "lib/systemd/user" / unit,
            "[Service]\nExecStart=/bin/true\n[Install]\nWantedBy=graphical-session.target\n");
        EXPECT_EQ(rig.ask('+'), "");
        EXPECT_EQ(rig.status(), Enabled);
        EXPECT_TRUE(std::filesystem::is_symlink(rig.written()));
        EXPECT_EQ(rig.ask('-'), "");
        EXPECT_EQ(rig.status(), NotRegistered);

        ASSERT_TRUE(systemctl(std::string("mask ") + unit));
        EXPECT_EQ(rig.status(), RequiresApproval);
        const auto lines = rig.setEnabled(true);
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_TRUE(lines[0].starts_with("Quillox: watchdog update failed: ")) << lines[0];
        EXPECT_NE(lines[0].find("masked"), std::string::npos) << lines[0];
    }

    TEST(AgentServicesSystemdTest, MovesBetweenSessionsWithAndWithoutTheManager)
    {
        if (!std::getenv(confinement))
            return runConfined();
        Beside rig("plain");
        ASSERT_EQ(rig.ask('+'), "");
        EXPECT_TRUE(std::filesystem::exists(rig.entry()));
        EXPECT_EQ(rig.status(), Enabled);
        rig.beginSession();
        EXPECT_EQ(rig.status(), NotRegistered);
        ASSERT_EQ(rig.ask('+'), "");
        EXPECT_EQ(rig.status(), Enabled);
        EXPECT_FALSE(std::filesystem::exists(rig.entry())) << "it would start twice";
        rig.endSession();
        EXPECT_EQ(rig.status(), NotRegistered);
        ASSERT_EQ(rig.ask('+'), "");
        EXPECT_FALSE(systemctl(std::string("is-enabled ") + unit));
        ASSERT_EQ(rig.ask('-'), "");
        EXPECT_EQ(rig.status(), NotRegistered);
    }

    TEST(AgentServicesSystemdTest, ComesBackFromWhatIsNoQuit)
    {
        if (!std::getenv(confinement))
            return runConfined();
        Beside rig;
        rig.beginSession();
        ASSERT_EQ(rig.ask('+'), "");
        EXPECT_TRUE(rig.lives().empty());
        rig.endSession();
        rig.beginSession();
        ASSERT_TRUE(rig.reachesLife(1));
        // More in a row than a manager usually puts up with; the last one only hangs.
        std::size_t life = 1;
        for (const auto end : { SIGSEGV, SIGKILL, SIGABRT, SIGKILL, SIGSEGV, SIGKILL, SIGSTOP }) {
            ::kill(rig.lives().back(), end);
            ASSERT_TRUE(rig.reachesLife(++life)) << end;
        }
        const auto isDead = [] {
            return systemctl(std::string("show -p SubState --value ") + unit + " | grep -qx dead");
        };
        ::kill(rig.lives().back(), SIGUSR1);
        EXPECT_TRUE(rig.waitFor(isDead)) << "a quit is one";
        EXPECT_EQ(rig.lives().size(), life);

        rig.endSession();
        rig.beginSession();
        ASSERT_TRUE(rig.reachesLife(++life));
        rig.endSession();
        EXPECT_TRUE(rig.waitFor(isDead)) << "it ends with the session";
        EXPECT_EQ(rig.lives().size(), life);
    }

} // namespace

} // namespace quillox
