#include "update/UpdateBed.h"

#include "fakes/FakeSystemLog.h"
#include "platform/linux/launcher/Launcher.h"
#include "platform/linux/service/NotifySocket.h"
#include "platform/linux/system/SystemLogStderr.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <thread>

namespace quillox {

namespace {

    namespace fs = std::filesystem;
    using namespace std::chrono_literals;

    /// What a program does that works: as the application does when it shows its page.
    constexpr auto works = "sed -i -e /^trial/d -e /^previous/d -e /^starts/d $root/update/notes; ";

    class LauncherTest : public testing::Test {
    protected:
        /// Puts 1.1.0 on trial.
        void install(const std::string& deed, int starts = 0)
        {
            fs::remove_all(bed.folders.updateFolder());
            bed.makeProgram(bed.folders.folderOf({ 1, 1, 0 }), "1.1.0", deed);
            auto notes = UpdateTrial::begun({}, { 1, 1, 0 }, { 1, 0, 0 });
            notes.trial->starts = starts;
            ASSERT_EQ(bed.folders.writeNotes(notes.text()), std::nullopt);
            ASSERT_EQ(bed.folders.makeCurrent({ 1, 1, 0 }), std::nullopt);
        }

        /// Starts the installation and waits for its end.
        int launch(std::chrono::milliseconds patience = 30s, const char* argument = nullptr)
        {
            int status = 0;
            ::waitpid(begin(patience, argument), &status, 0);
            return status;
        }

        pid_t begin(std::chrono::milliseconds patience, const char* argument = nullptr)
        {
            const auto child = ::fork();
            if (child == 0) {
                ::setenv("DISPLAY", ":0", 1);
                SystemLogStderr log;
                std::string name = bed.folders.launcher();
                char* argv[] { name.data(), const_cast<char*>(argument), nullptr };
                ::_exit(Launcher(bed.folders, log, patience).run(argv));
            }
            return child;
        }

        UpdateNotes notes() const { return UpdateNotes::parse(bed.folders.notes()); }
        bool isBack() const
        {
            return bed.folders.current() == Version { 1, 0, 0 } && !notes().trial
                && notes().rolledBack == std::set { Version { 1, 1, 0 } };
        }

        UpdateBed bed;
    };

    TEST_F(LauncherTest, AVersionThatDoesNotComeSoFarIsRolledBack)
    {
        struct Row {
            const char *deed, *trace;
            std::chrono::milliseconds patience = 30s;
        };
        for (const auto& [deed, trace, patience] : {
                 Row { "kill -SEGV $$", "1.1.0 1.1.0 1.0.0 " },
                 Row { "exit 1", "1.1.0 1.1.0 1.0.0 " },
                 Row { "exec sleep 3600", "1.1.0 1.0.0 ", 500ms },
                 Row { "trap '' TERM; exec sleep 3600", "1.1.0 1.0.0 ", 500ms },
             }) {
            install(deed);
            const auto begin = std::chrono::steady_clock::now();
            EXPECT_EQ(launch(patience), 0) << deed;
            EXPECT_EQ(bed.takeTrace(), trace) << deed;
            EXPECT_TRUE(isBack()) << deed;
            EXPECT_LT(std::chrono::steady_clock::now() - begin, 60s);
            launch();
            EXPECT_EQ(bed.takeTrace(), "1.0.0 ");
        }
        install("exit 0");
        put(bed.folders.programOf({ 1, 1, 0 }),
            "\x7f"
            "ELF is not everything");
        EXPECT_EQ(launch(), 0);
        EXPECT_TRUE(isBack());
        bed.takeTrace();

        install("exit 0");
        fs::remove_all(bed.folders.folderOf({ 1, 1, 0 }));
        EXPECT_EQ(launch(), 0);
        EXPECT_TRUE(isBack());
        EXPECT_EQ(bed.takeTrace(), "1.0.0 ");

        install("exit 0", UpdateTrial::mostStarts); // That nobody saw the end of.
        EXPECT_EQ(launch(), 0);
        EXPECT_TRUE(isBack());
        EXPECT_EQ(bed.takeTrace(), "1.0.0 ");
    }

    TEST_F(LauncherTest, AVersionThatWorksStaysAndItsEndIsPassedOn)
    {
        install(std::string(works) + "exit 3");
        EXPECT_EQ(launch(), 3 << 8);
        install(std::string(works) + "kill -SEGV $$");
        EXPECT_EQ(launch() & 0x7f, SIGSEGV);
        install(std::string(works) + "sleep 2; exit 4");
        EXPECT_EQ(launch(500ms), 4 << 8);
        EXPECT_EQ(bed.takeTrace(), "1.1.0 1.1.0 1.1.0 ");
        EXPECT_EQ(notes(), UpdateNotes {});

        // Ended by the user before it had shown anything: nothing is known yet.
        install("exit 0");
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(bed.takeTrace(), "1.1.0 1.1.0 1.1.0 ");
        EXPECT_EQ(notes().trial.value().starts, 0);
        install("kill -TERM $PPID; exec sleep 30");
        EXPECT_EQ(launch() & 0x7f, SIGTERM);
        EXPECT_EQ(notes().trial.value().starts, 0);
    }

    TEST_F(LauncherTest, CommandLinesAndSecondStartsSayNothingAboutAVersion)
    {
        install("exit 1");
        EXPECT_EQ(launch(30s, "--version"), 1 << 8);
        EXPECT_EQ(notes().trial.value().starts, 0);
        bed.takeTrace();
        // The first start makes a second one of another process, which has to pass.
        install("if [ -z \"$SECOND\" ]; then SECOND=1 setsid sh -c 'env -u QUILLOX_LAUNCHER "
            + bed.folders.launcher() + "'; echo $? >>" + bed.trace().string()
            + "; exit 0; fi; exit 7");
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(bed.takeTrace(), "1.1.0 1.1.0 7 ");
    }

    TEST_F(LauncherTest, AServiceManagerHearsAVersionOnTrialAsItsOwn)
    {
        NotifySocket manager;
        ::setenv("NOTIFY_SOCKET", manager.name().c_str(), 1);
        ::setenv("WATCHDOG_PID", "1", 1);
        install("[ $WATCHDOG_PID = $$ ] && exec /usr/bin/python3 -c 'import os, socket, time\n"
                "name = os.environ[\"NOTIFY_SOCKET\"].replace(\"@\", \"\\0\")\n"
                "while True:\n"
                " socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM).sendto(b\"WATCHDOG=1\", name)\n"
                " time.sleep(0.1)'");
        const auto launcher = begin(30s);
        ::unsetenv("NOTIFY_SOCKET");
        ::unsetenv("WATCHDOG_PID");
        bool isHeard = false;
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        while (!isHeard && std::chrono::steady_clock::now() < deadline) {
            pollfd readable { manager.descriptor(), POLLIN, 0 };
            ::poll(&readable, 1, 1000);
            isHeard = manager.takePing(launcher);
        }
        EXPECT_TRUE(isHeard);
        ::kill(launcher, SIGTERM);
        ::waitpid(launcher, nullptr, 0);
    }

    TEST_F(LauncherTest, EndedByForceItTakesTheProgramAlong)
    {
        install("echo $$ >$root/../process; exec sleep 3600");
        const auto launcher = begin(60s);
        const auto file = bed.folder.path / "process";
        const auto process
            = [&] { return "/proc/" + std::to_string(std::atoi(contentsOf(file).c_str())); };
        const auto isRunning = [&] {
            return contentsOf(process() + "/comm") == "sleep\n"
                && contentsOf(process() + "/stat").find(") Z") == std::string::npos;
        };
        const auto deadline = std::chrono::steady_clock::now() + 20s;
        while (!isRunning() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        ASSERT_TRUE(isRunning());
        ::kill(launcher, SIGKILL);
        ::waitpid(launcher, nullptr, 0);
        EXPECT_EQ(notes().trial.value().starts, 1); // Noted before, since nobody can afterwards.
        while (isRunning() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::yield();
        EXPECT_FALSE(isRunning());
    }

    TEST_F(LauncherTest, AVersionThatWorksUpdatesToTheNext)
    {
        install(std::string(works)
            + "if [ ! -e $root/again ]; then touch $root/again; exec $root/quillox; fi; exit 0");
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(bed.takeTrace(), "1.1.0 1.1.0 ");

        // 1.1.0 works, installs 1.2.0 and starts anew, as the application does; that one crashes.
        bed.makeProgram(bed.folders.folderOf({ 1, 2, 0 }), "1.2.0", "kill -SEGV $$");
        install(std::string(works)
            + "if [ ! -e $root/once ]; then touch $root/once; "
              "printf 'trial=1.2.0\\nprevious=1.1.0\\nstarts=0\\n' >$root/update/notes; "
              "ln -sfn versions/1.2.0 $root/current; exec $root/quillox; fi; exit 0");
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(bed.takeTrace(), "1.1.0 1.2.0 1.2.0 1.1.0 ");
        EXPECT_EQ(bed.folders.current(), (Version { 1, 1, 0 }));
        EXPECT_EQ(notes().rolledBack, std::set { (Version { 1, 2, 0 }) });
    }

    TEST_F(LauncherTest, WhenTheCurrentVersionCannotRunAnotherOneDoes)
    {
        fs::remove(fs::path(bed.folders.root()) / "current");
        EXPECT_EQ(launch(), 0);
        EXPECT_EQ(bed.takeTrace(), "1.0.0 ");
        fs::remove(bed.folders.programOf({ 1, 0, 0 }));
        EXPECT_EQ(launch(), 127 << 8);
    }

} // namespace

} // namespace quillox
