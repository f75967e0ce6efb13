#include "lockdown/LockReport.h"

#include "app/CommandLine.h"
#include "app/DoctorCommand.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace quillox {

namespace {

    using F = LockFacts;
    using Display = LockFacts::Display;
    using Grab = X11Facts::KeyboardGrab;
    using State = LockFinding::State;

    /// An ordinary user's machine on which the system lets nothing through.
    F machine(Display display, std::string server)
    {
        F facts;
        facts.display = display;
        facts.displayServer = std::move(server);
        facts.serverReadsInput = true;
        facts.sysrq = 16;
        facts.ignoresCtrlAltDelete = true;
        facts.login = { { "HandlePowerKey=poweroff" }, "suspend", {} };
        facts.hasSandbox = true;
        facts.x11 = { .keyboardGrab = Grab::Free,
            .windowManager = "",
            .serverKeys = 15,
            .canChangeServerKeys = true,
            .otherClients = { {} },
            .hasAccessControl = true,
            .canSuspendScreenSaver = true };
        facts.wayland = { .isSingleWindow = facts.displayServer == "cage",
            .offersShortcutsInhibitor = true,
            .offersIdleInhibitor = true,
            .switchesTerminals = false,
            .uninhibitableBindings = { {} } };
        return facts;
    }

    F xorg()
    {
        return machine(Display::X11, "Xorg");
    }
    F wayland(const char* compositor)
    {
        return machine(Display::Wayland, compositor);
    }

    void runKiosk(F& facts, std::optional<bool> isSealed, Grab grab, int serverKeys = 0)
    {
        facts.kioskProcess = 7;
        facts.isKioskSealed = isSealed;
        facts.x11.keyboardGrab = grab;
        facts.x11.serverKeys = serverKeys;
    }

    /// The subjects that are not closed: "!" before what blocks, "?" before what was not checked.
    std::string openSubjects(const LockReport& report)
    {
        std::string text;
        for (const auto& [subject, state, title, explanation, remedy, change] : report.findings) {
            EXPECT_EQ(remedy.empty() && change.empty(), state == State::Closed) << subject;
            EXPECT_EQ((explanation + remedy + change).find("{}"), std::string::npos) << subject;
            const auto* mark = state == State::Blocking ? "!" : state == State::Gap ? "" : "?";
            if (state != State::Closed)
                text += (text.empty() ? "" : " ") + std::string(mark) + std::string(subject);
        }
        return text;
    }

    TEST(LockReportTest, SaysOfEachMachineWhatIsOpen)
    {
        struct Row {
            const char* name;
            F facts;
            void (*change)(F&);
            int exitCode;
            const char* open;
        };
        const auto withManager = [](F& f) {
            f.serverReadsInput = f.x11.hasAccessControl = false;
            f.x11.hasWindowManager = true;
            f.x11.otherClients->push_back("openbox (process 9)");
        };
        const auto soft = [](F& f) {
            f.sysrq = 438;
            f.ignoresCtrlAltDelete = f.hasSandbox = false;
            f.login->refusedInhibitors = { "idle", "handle-power-key" };
            f.isRoot = true;
        };
        const auto silent = [](F& f) {
            f.sysrq.reset();
            f.login.reset();
            f.ignoresCtrlAltDelete = f.serverReadsInput = f.wayland.switchesTerminals = {};
        };
        const auto nested
            = [](F& f) { f.serverReadsInput = !(f.wayland.switchesTerminals = true); };
        const auto leaky = [](F& f) {
            f.wayland.uninhibitableBindings->push_back("bindsym --inhibited a exec b");
            f.wayland.switchesTerminals = true;
        };
        const Row rows[] {
            { "dedicated Xorg", xorg(), [](F& f) { f.sysrq = 26; }, 0, "" },
            { "cage", wayland("cage"), [](F&) {}, 0, "" },
            { "cage -s", wayland("cage"), [](F& f) { f.wayland.switchesTerminals = true; }, 3,
                "terminals" },
            { "nested cage", wayland("cage"), nested, 3, "input" },
            { "window manager", xorg(), withManager, 3, "input desktop clients access" },
            { "held", xorg(), [](F& f) { f.x11.keyboardGrab = Grab::Held; }, 4, "!keyboard" },
            { "sealed", xorg(), [](F& f) { runKiosk(f, true, Grab::Held); }, 0, "" },
            { "setup", xorg(), [](F& f) { runKiosk(f, false, Grab::Held); }, 4, "!keyboard" },
            { "lost", xorg(), [](F& f) { runKiosk(f, true, Grab::Free); }, 4, "!keyboard" },
            { "no XRes", xorg(), [](F& f) { runKiosk(f, {}, Grab::Held); }, 3, "?keyboard" },
            { "keys", xorg(), [](F& f) { runKiosk(f, true, Grab::Held, 1); }, 3, "terminals" },
            { "fixed keys", xorg(), [](F& f) { f.x11.canChangeServerKeys = false; }, 3,
                "terminals" },
            { "Xwayland", xorg(), [](F& f) { f.x11.isXwayland = true; }, 4, "!display" },
            { "leaky sway", wayland("sway"), leaky, 3, "bindings terminals desktop" },
            { "weston", wayland("weston"), [](F& f) { f.wayland = {}; }, 4,
                "!keyboard ?bindings ?terminals desktop displaySleep" },
            { "GNOME", wayland("gnome-shell"), leaky, 3, "?keyboard bindings terminals desktop" },
            { "KWin", wayland("kwin_wayland"), [](F&) {}, 3, "?keyboard desktop" },
            { "none", machine(Display::Absent, ""), [](F&) {}, 4, "!display" },
            { "soft", wayland("cage"), soft, 3, "power idle sysrq ctrlAltDelete user sandbox" },
            { "silent", wayland("cage"), silent, 3,
                "?power ?sysrq ?ctrlAltDelete ?input ?terminals" },
            { "no namespaces", xorg(), [](F& f) { f.sandboxFailure = "bwrap: no"; }, 4,
                "!sandbox" },
            { "SysRq all", xorg(), [](F& f) { f.sysrq = 1; }, 3, "sysrq" },
        };
        for (const auto& row : rows) {
            SCOPED_TRACE(row.name);
            auto facts = row.facts;
            row.change(facts);
            std::ostringstream out;
            EXPECT_EQ(doctorCommand(facts, false, out, out), row.exitCode);
            EXPECT_EQ(out.str().starts_with("Sealed"), facts.isKioskSealed == true);
            EXPECT_EQ(openSubjects(lockReport(facts)), row.open);
        }
    }

    TEST(LockReportTest, JsonIsAlwaysValidAndTextKeepsLinesToCopy)
    {
        auto facts = wayland("sway");
        const auto binding = "bindsym --inhibited " + std::string(90, 'x') + " \xff y";
        facts.wayland.uninhibitableBindings->push_back(binding);
        std::ostringstream out;
        EXPECT_EQ(doctorCommand(facts, true, out, out), exitSealedWithGaps);
        const auto document = nlohmann::json::parse(out.str());
        EXPECT_EQ(document["format"], 1);
        EXPECT_EQ(document["verdict"], "sealedWithGaps");
        EXPECT_TRUE(document["kiosk"]["isSealed"].is_null());
        const auto text = lockReportText(lockReport(facts), facts);
        EXPECT_NE(text.find("\n        " + binding + "\n"), std::string::npos) << text;
        EXPECT_LT(text.find("[open]"), text.find("[closed]"));
    }

} // namespace

} // namespace quillox
