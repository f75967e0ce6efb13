#include "app/SetupSessionCommand.h"

#include "fakes/FakeMachineFiles.h"

#include <gtest/gtest.h>

#include <sstream>

namespace quillox {

namespace {

    constexpr auto managerLink = "/etc/systemd/system/display-manager.service";
    constexpr auto lightConf = "/etc/lightdm/lightdm.conf";
    constexpr auto lightOwn = "/etc/lightdm/lightdm.conf.d/zz-quillox.conf";
    constexpr auto gdmConf = "/etc/gdm3/daemon.conf";
    constexpr auto gdmKept = "/etc/gdm3/daemon.conf.before-quillox";
    constexpr auto gdmUser = "/var/lib/AccountsService/users/kiosk";
    constexpr auto gdmUserKept = "/var/lib/AccountsService/kiosk.before-quillox";
    constexpr auto sddmConf = "/etc/sddm.conf";
    constexpr auto sddmOwn = "/etc/sddm.conf.d/zz-quillox.conf";
    constexpr auto greetdConf = "/etc/greetd/config.toml";
    constexpr auto serverConf = "/etc/X11/xorg.conf.d/90-quillox.conf";
    const std::string gdmBefore = "# Storage\r\n\r\n[daemon]\r\n#AutomaticLogin = user1\r\n"
                                  "AutomaticLogin=old\r\nTimedLoginDelay=9\r\n[debug]";

    class SetupSessionCommandTest : public testing::Test {
    protected:
        SetupSessionCommandTest()
        {
            for (const auto* program : { "/usr/bin/cage", "/usr/bin/Xwayland", "/usr/bin/Xorg",
                     "/usr/sbin/lightdm", "/usr/sbin/gdm3", "/usr/bin/sddm", "/usr/sbin/greetd" })
                machine.files[program] = "";
            for (const auto* kind : { "wayland", "x11" })
                machine.files[entryPath(kind)]
                    = "[Desktop Entry]\nExec=/usr/lib/quillox/session " + std::string(kind) + "\n";
            use("lightdm");
        }

        static std::string entryPath(const std::string& kind)
        {
            return "/usr/share/" + (kind == "x11" ? "xsessions" : kind + "-sessions") + "/quillox-"
                + kind + ".desktop";
        }
        void use(const std::string& manager)
        {
            machine.links[managerLink] = "/lib/systemd/system/" + manager + ".service";
        }
        int run(std::vector<std::string> arguments)
        {
            std::ostringstream out, err;
            arguments.insert(arguments.begin(), "setup-session");
            const auto line = CommandLine::parse(arguments);
            auto code = exitUsage;
            if (line.kind == CommandLine::Kind::setupSession)
                code = SetupSessionCommand({ machine, out, err }).run(line.setupSession);
            output = out.str();
            error = line.error.empty() ? err.str() : line.error + "\n";
            return code;
        }
        int setUp(const char* session = "wayland")
        {
            return run({ "--user", "kiosk", "--session", session, "--yes" });
        }
        int undo() { return run({ "--user", "kiosk", "--undo", "--yes" }); }

        FakeMachineFiles machine;
        std::string output, error;
    };

    TEST_F(SetupSessionCommandTest, EveryDisplayManagerIsToldAndUndoGivesBackEveryByte)
    {
        using Files = std::map<std::string, std::string>;
        struct Row {
            const char* manager;
            const char* session;
            Files before;
            /// Ends of what stands in each file afterwards.
            Files after;
        };
        const std::string server = "\"DontZap\" \"true\"\nEndSection\n";
        const Row rows[] {
            { "lightdm", "x11", {},
                { { lightOwn,
                      "[Seat:*]\nautologin-user=kiosk\nautologin-user-timeout=0\n"
                      "autologin-session=quillox-x11\n" },
                    { serverConf, server } } },
            { "lightdm", "wayland",
                { { lightConf,
                    "[LightDM]\nautologin-user=x\n[Seat:*]\n #autologin-user=\n"
                    "autologin-user = pi\nuser-session=a\n[SeatDefaults]\nautologin-session=b" } },
                { { lightConf,
                      "[LightDM]\nautologin-user=x\n[Seat:*]\n #autologin-user=\n"
                      "#autologin-user = "
                      "pi\nuser-session=a\n[SeatDefaults]\n#autologin-session=b" },
                    { lightOwn, "autologin-session=quillox-wayland\n" } } },
            { "gdm", "wayland",
                { { gdmConf, gdmBefore }, { gdmUser, "[User]\nIcon=a\nSession=gnome\n" } },
                { { gdmConf,
                      "# Storage\r\n\r\n[daemon]\r\nAutomaticLoginEnable=true\r\n"
                      "#AutomaticLogin = user1\r\nAutomaticLogin=kiosk\r\nTimedLoginDelay=9\r\n"
                      "[debug]" },
                    { gdmUser,
                        "[User]\nSessionType=wayland\nIcon=a\nSession=quillox-wayland\n" } } },
            { "gdm3", "x11", { { gdmConf, "[debug]\nEnable=true" } },
                { { gdmConf,
                      "[debug]\nEnable=true\n\n[daemon]\nAutomaticLoginEnable=true\n"
                      "AutomaticLogin=kiosk\n" },
                    { gdmUser, "[User]\nSession=quillox-x11\nSessionType=x11\n" },
                    { serverConf, server } } },
            { "sddm", "wayland", { { sddmConf, "[Autologin]\nUser=\n[Users]\nUser=1\n" } },
                { { sddmConf, "[Autologin]\n#User=\n[Users]\nUser=1\n" },
                    { sddmOwn,
                        "[Autologin]\nUser=kiosk\nSession=quillox-wayland.desktop\n"
                        "Relogin=true\n" } } },
            { "greetd", "wayland",
                { { greetdConf,
                    "[terminal]\nvt = 7\nuser = \"t\"\n[default_session]\n#command = "
                    "\"a\"\ncommand = \"b\"\n"
                    "user = \"_greetd\"\n[initial_session] # once\nuser = \"old\"\n" } },
                { { greetdConf,
                    "[terminal]\nvt = 7\nuser = \"t\"\n[default_session]\n#command = \"a\"\n"
                    "command = \"/usr/lib/quillox/session wayland\"\nuser = \"kiosk\"\n"
                    "[initial_session] # once\ncommand = \"/usr/lib/quillox/session wayland\"\n"
                    "user = \"kiosk\"\n" } } },
        };
        const auto installed = machine.files;
        for (const auto& row : rows) {
            SCOPED_TRACE(std::string(row.manager) + " " + row.session);
            machine.files = installed;
            machine.files.insert(row.before.begin(), row.before.end());
            const auto before = machine.files;
            use(row.manager);
            EXPECT_EQ(setUp(row.session), exitSuccess) << error;
            EXPECT_EQ(
                machine.files.size(), installed.size() + row.before.size() + row.after.size());
            for (const auto& [path, end] : row.after) {
                EXPECT_TRUE(machine.files[path].ends_with(end)) << path << machine.files[path];
                EXPECT_NE(output.find(path), std::string::npos) << output;
            }
            EXPECT_EQ(setUp(row.session), exitSuccess);
            EXPECT_EQ(output, "There is nothing to change.\n");
            EXPECT_EQ(undo(), exitSuccess) << error;
            EXPECT_EQ(machine.files, before);
            EXPECT_EQ(undo(), exitSuccess);
            EXPECT_EQ(output, "There is nothing to change.\n");
        }
    }

    TEST_F(SetupSessionCommandTest, ShowsTheChangesAndMakesThemForRootWithYesOnly)
    {
        use("gdm");
        machine.files[gdmConf] = "[daemon]\na=1\n\x1b[2J\nAutomaticLogin=old\nb=2\nc=3\n";
        machine.files[gdmUser] = "[User]\nSession=gnome\n";
        const auto before = machine.files;
        const std::string shown
            = "So that GDM logs kiosk in by itself, to the session quillox-wayland:\n"
              "\nNew file "
            + std::string(gdmUserKept) + ": " + gdmUser
            + " as it is now.\n"
              "\nChange "
            + gdmUser
            + ":\n    [User]\n  - Session=gnome\n"
              "  + SessionType=wayland\n  + Session=quillox-wayland\n"
              "\nNew file "
            + gdmKept + ": " + gdmConf
            + " as it is now.\n"
              "\nChange "
            + gdmConf
            + ":\n    [daemon]\n  + AutomaticLoginEnable=true\n    a=1\n"
              "    ?[2J\n  - AutomaticLogin=old\n  + AutomaticLogin=kiosk\n    b=2\n\n";
        EXPECT_EQ(run({ "--user", "kiosk" }), exitUsage);
        EXPECT_EQ(output, shown);
        EXPECT_EQ(error, "quillox: nothing was changed; run it with --yes\n");
        machine.root = false;
        EXPECT_EQ(setUp(), exitUsage);
        EXPECT_EQ(output, shown);
        EXPECT_EQ(error, "quillox: nothing was changed; run it as root with --yes\n");
        machine.rootOnly = { gdmUser };
        EXPECT_EQ(run({ "--user", "kiosk" }), exitUsage);
        EXPECT_NE(output.find("Only root can read " + std::string(gdmUser)), std::string::npos);
        EXPECT_EQ(machine.files, before);

        machine.root = true;
        EXPECT_EQ(setUp(), exitSuccess);
        EXPECT_TRUE(output.starts_with(shown + "Done. ")) << output;
        EXPECT_EQ(machine.made[gdmKept].sameAs, gdmConf);
        machine.root = false;
        machine.rootOnly.clear();
        EXPECT_EQ(undo(), exitUsage);
        EXPECT_NE(output.find("- AutomaticLogin=kiosk\n  + AutomaticLogin=old\n"), output.npos);
        EXPECT_NE(output.find("Remove " + std::string(gdmKept)), output.npos);
        EXPECT_TRUE(machine.files.contains(gdmKept));
    }

    TEST_F(SetupSessionCommandTest, RefusesInOneLineAndChangesNothing)
    {
        struct Row {
            std::vector<std::string> arguments;
            std::function<void(FakeMachineFiles&)> prepare;
            int code;
            const char* named;
        };
        const auto as = [](const char* manager) {
            return [manager](FakeMachineFiles& on) {
                on.links[managerLink] = std::string("/lib/systemd/system/") + manager;
            };
        };
        const auto without = [](const std::string& path) {
            return [path](FakeMachineFiles& on) { on.files.erase(path); };
        };
        const auto nothing = [](FakeMachineFiles&) {};
        const std::vector<std::string> kiosk { "--user", "kiosk", "--yes" };
        const std::vector<std::string> x11 { "--user", "kiosk", "--session", "x11", "--yes" };
        const Row rows[] { { {}, nothing, exitUsage, "usage: quillox setup-session --user NAME" },
            { { "--user", "kiosk", "--session", "mir" }, nothing, exitUsage, "usage: " },
            { { "--user", "kiosk", "--session" }, nothing, exitUsage, "usage: " },
            { { "--user", "kiosk", "--yse" }, nothing, exitUsage, "usage: " },
            { { "--user", "a/../b\n", "--yes" }, nothing, exitUsage, "\"a/../b\\n\" is no name" },
            { { "--user", "-x", "--undo", "--yes" }, nothing, exitUsage, "is no name" },
            { { "--user", "visitor", "--yes" }, nothing, exitUsage, "there is no user visitor" },
            { { "--user", "root", "--yes" }, nothing, exitUsage, "root's rights" },
            { { "--user", "_greetd", "--yes" }, nothing, exitUsage, "of the system (number 112)" },
            { { "--user", "nobody", "--yes" }, nothing, exitUsage, "of the system" },
            { kiosk, as("xdm.service"), exitFailure, "logs in by xdm.service" },
            { kiosk, without("/usr/sbin/lightdm"), exitFailure, "not installed" },
            { kiosk, without("/usr/bin/cage"), exitFailure, "sudo apt install cage" },
            { kiosk, without(entryPath("wayland")), exitFailure,
                "quillox-wayland.desktop is miss" },
            { x11, without("/usr/bin/Xorg"), exitFailure, "install xserver-xorg" },
            { x11, as("greetd.service"), exitFailure, "greetd starts no X server" },
            { kiosk,
                [&](FakeMachineFiles& on) {
                    as("gdm.service")(on);
                    on.files[gdmConf] = "[daemon]\nWaylandEnable = false\n";
                },
                exitFailure, "WaylandEnable=false" },
            { kiosk, [](FakeMachineFiles& on) { on.links.clear(); }, exitFailure,
                "several display managers" },
            { kiosk,
                [](FakeMachineFiles& on) {
                    on.links.clear();
                    for (const auto& manager : displayManagers())
                        on.files.erase(std::string(manager.program));
                },
                exitFailure, "no display manager" } };
        const auto installed = machine;
        for (const auto& row : rows) {
            machine = installed;
            row.prepare(machine);
            EXPECT_EQ(run(row.arguments), row.code) << row.named;
            EXPECT_NE(error.find(row.named), std::string::npos) << error;
            EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
            EXPECT_EQ(output, "");
            EXPECT_EQ(machine.writes, 0);
        }
        machine = installed;
        machine.links.clear();
        machine.files["/etc/X11/default-display-manager"] = "/usr/bin/sddm\n";
        EXPECT_EQ(setUp(), exitSuccess);
        EXPECT_TRUE(machine.files.contains(sddmOwn));
    }

    TEST_F(SetupSessionCommandTest, AFileThatWasChangedSinceStaysAndIsNamed)
    {
        use("gdm");
        machine.files[gdmConf] = gdmBefore;
        setUp();
        machine.files[gdmConf] += "\r\nEnable=true\r\n";
        const auto edited = machine.files[gdmConf];
        EXPECT_EQ(setUp("x11"), exitFailure);
        EXPECT_FALSE(machine.files.contains(serverConf));
        EXPECT_EQ(undo(), exitFailure);
        EXPECT_NE(error.find(std::string(gdmConf) + " was changed"), std::string::npos) << error;
        EXPECT_NE(error.find(gdmKept), std::string::npos) << error;
        EXPECT_EQ(machine.files[gdmConf], edited);
        EXPECT_EQ(machine.files[gdmKept], gdmBefore);
        EXPECT_FALSE(machine.files.contains(gdmUser)); // Which nobody has changed.

        machine.files[gdmUser] = "[User]\nSession=quillox-x11\nSessionType=x11\nIcon=new\n";
        undo();
        EXPECT_NE(error.find("no " + std::string(gdmUserKept)), std::string::npos) << error;
        use("lightdm");
        setUp();
        machine.files[lightOwn] += "# mine\n";
        EXPECT_EQ(undo(), exitFailure);
        EXPECT_NE(error.find(lightOwn), std::string::npos) << error;
        EXPECT_TRUE(machine.files.contains(lightOwn));
    }

    TEST_F(SetupSessionCommandTest, AnotherSessionTakesThePlaceOfTheFirst)
    {
        use("gdm");
        machine.files[gdmConf] = gdmBefore;
        const auto before = machine.files;
        setUp();
        const auto wayland = machine.files;
        EXPECT_EQ(setUp("x11"), exitSuccess) << error;
        EXPECT_EQ(setUp(), exitSuccess) << error;
        EXPECT_EQ(machine.files, wayland);
        EXPECT_EQ(run({ "--user", "second", "--yes" }), exitFailure);
        EXPECT_NE(error.find("for another user"), std::string::npos) << error;
        EXPECT_EQ(machine.files, wayland);
        setUp("x11");
        machine.users.erase("kiosk");
        use("lightdm");
        EXPECT_EQ(undo(), exitSuccess) << error;
        EXPECT_EQ(machine.files, before);
    }

    TEST_F(SetupSessionCommandTest, WhatFailsHalfWayIsTakenBack)
    {
        use("gdm");
        machine.files[gdmConf] = gdmBefore;
        machine.files[gdmUser] = "[User]\n";
        auto before = machine.files;
        for (const auto* path : { gdmConf, gdmKept, gdmUser, gdmUserKept, serverConf }) {
            machine.failing = { path };
            EXPECT_EQ(setUp("x11"), exitFailure) << path;
            EXPECT_NE(error.find(std::string(path) + ": No space left"), std::string::npos)
                << error;
            EXPECT_NE(error.find("taken back"), std::string::npos) << error;
            EXPECT_EQ(machine.files, before) << path;
        }
        machine.failing.clear();
        setUp("x11");
        before = machine.files;
        machine.failing = { gdmKept };
        EXPECT_EQ(undo(), exitFailure);
        EXPECT_EQ(machine.files, before);
        EXPECT_EQ(machine.made[gdmUserKept].sameAs, gdmUser);
    }

} // namespace

} // namespace quillox
