#include "core/SealedMachine.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using Lines = std::vector<std::string>;
    using namespace std::chrono_literals;
    using enum ModifierFlags;
    constexpr auto gesture = Command | Shift;
    constexpr auto fullHold = 1020ms; // A second, and the sample that notices it.
    constexpr auto swallow = EventMonitors::Verdict::Swallow;
    constexpr auto pass = EventMonitors::Verdict::Pass;

    class KioskControllerTest : public testing::Test, protected SealedMachine {
    protected:
        bool start(const KioskSettings& settings)
        {
            return controller->start(settings, [this] { ++exits; });
        }

        void holdGesture(std::chrono::milliseconds time)
        {
            keyboard.press(keys::s, gesture);
            runLoop.advance(time);
        }
        void letGo() { keyboard.release(keys::s, gesture); }

        int exits = 0;
        std::unique_ptr<KioskController> controller = makeController();
    };

    TEST_F(KioskControllerTest, BuildsARunAndUndoesItInOrder)
    {
        screens.plugIn({ 8, "Wall", { 1512, 0, 800, 600 }, 0 });
        auto settings = siteSettings();
        settings.avoidNotch = true;
        settings.showHome = true;
        settings.navPosition = NavPosition::topRight;
        settings.idleResetSeconds = 45;
        screens.plugIn({ 7, "Studio", { 0, 0, 1512, 982 }, 32 });

        EXPECT_FALSE(start(KioskSettings {}));
        EXPECT_TRUE(journal.take().empty());
        ASSERT_TRUE(start(settings));
        EXPECT_FALSE(start(settings)) << "one run at a time";
        EXPECT_FALSE(page().allowsMagnification || page().allowsGestures);
        EXPECT_EQ(page().loads.back(), (UrlRequest { settings.url, 60s }));
        EXPECT_EQ(journal.take(),
            (Lines { "make web view", "load https://museum.example/",
                "make kiosk window at 0,0 1512x982", "add view at 0,-1 1512x951", "make notch bar",
                "add view at 0,950 1512x32", "make offline notice", "add view at 0,0 1512x982",
                "watch network on com.orvendal.quillox.network", "make hold indicator at 0",
                "add view at 0,0 1512x982", "make nav bar", "add view at 1420,870 64x52",
                "kiosk window content", "kiosk window key and front", "activate",
                "make cover 8 at 1512,0 800x600", "cover 8 frame 1512,0 800x600", "cover 8 front",
                "presentation 0x3fa", "key lock on", "hot key 28 off", "hot key 29 off",
                "hot key 30 off", "hot key 31 off", "hot key 184 off", "hot key 64 off",
                "hot key 65 off",
                "assert PreventUserIdleDisplaySleep 255 'Quillox kiosk is sealed'" }));

        controller->stop();
        EXPECT_EQ(journal.take(),
            (Lines { "key lock off", "release assertion 1", "hot key 28 on", "hot key 29 on",
                "hot key 30 on", "hot key 31 on", "hot key 184 on", "hot key 64 on",
                "hot key 65 on", "cover 8 out", "network watch ends", "presentation 0x0",
                "stop loading", "kiosk window out", "kiosk window no content", "windows forward",
                "activate" }));
        EXPECT_EQ(exits, 1);
        EXPECT_TRUE(windows.windows.empty() && windows.webViews.empty());
        EXPECT_EQ(eventMonitors.activeMonitors(), 0U);

        controller->stop();
        EXPECT_TRUE(journal.take().empty());
        EXPECT_EQ(exits, 1);
    }

    TEST_F(KioskControllerTest, OpensOnTheChosenDisplayAndFollowsIt)
    {
        screens.unplug(7);
        auto settings = siteSettings();
        settings.displayID = 8;
        ASSERT_TRUE(start(settings)) << "without any screen";
        screens.plugIn({ 7, "Studio", { 0, 0, 1512, 982 }, 0 });
        EXPECT_EQ(kioskWindow().spec.displayNumber, 7U);
        screens.plugIn({ 8, "Wall", { 1512, 0, 1024, 768 }, 0 });
        screens.plugIn({ 9, "Mirror", { 1512, 0, 800, 600 }, 0 });
        EXPECT_EQ(kioskWindow().spec.displayNumber, 8U);
        EXPECT_EQ(kioskWindow().content->views.front().frame, (Rect { 0, -1, 1024, 769 }));

        // Frames tell places beside the main screen: the same one may be another place now.
        journal.take();
        screens.plugIn({ 8, "Wall", { 1512, 0, 1024, 768 }, 0 });
        EXPECT_EQ(journal.take(),
            (Lines { "kiosk window frame 1512,0 1024x768", "cover 7 frame 0,0 1512x982",
                "cover 7 front", "kiosk window key and front" }));

        controller->stop();
        screens.unplug(7);
        EXPECT_TRUE(windows.windows.empty());
    }

    TEST_F(KioskControllerTest, FiltersKeys)
    {
        struct Row {
            Event event;
            bool isLocked;
            EventMonitors::Verdict verdict;
            bool endsRun;
        };
        const auto q = KeyCode { 12 };
        for (const auto& row : std::vector<Row> {
                 { keyDown(keys::s, gesture), false, swallow, true },
                 { keyDown(keys::s, gesture), true, swallow, false },
                 { keyDown(q, Command), false, swallow, false },
                 { keyDown(q, Control), true, swallow, false },
                 { keyDown(q, Option | Shift), false, pass, false },
                 { keyDown(keys::f7), true, swallow, false },
                 { keyDown(keys::print, Option), true, swallow, false },
                 { { EventType::KeyUp, keys::s, gesture, false }, false, pass, false },
                 { { EventType::LeftMouseDown, 0, Command, false }, false, pass, false },
             }) {
            SCOPED_TRACE(testing::Message() << "key " << row.event.keyCode << ", flags "
                                            << static_cast<unsigned>(row.event.flags));
            keyboard.allowsTaps = row.isLocked;
            ASSERT_TRUE(start(siteSettings()));
            EXPECT_EQ(eventMonitors.send(row.event), row.verdict);
            EXPECT_EQ(controller->isActive(), !row.endsRun);
            controller->stop();
        }
    }

    TEST_F(KioskControllerTest, AsksForThePasswordWhereOneIsRequiredAndWasSet)
    {
        auto settings = siteSettings();
        settings.requireExitPassword = true;
        ASSERT_TRUE(start(settings));
        holdGesture(fullHold);
        EXPECT_FALSE(controller->isActive());
        letGo();

        settings.exitPassword = "abc";
        ASSERT_TRUE(start(settings));
        for (int hold = 0; hold < 2; ++hold) {
            letGo();
            holdGesture(fullHold);
        }
        ASSERT_EQ(sealViews.prompts, 1);
        EXPECT_NE(kioskWindow().content->exclusive, nullptr);
        journal.take();
        sealViews.prompt->cancel();
        EXPECT_EQ(journal.take(), (Lines { "kiosk window first responder" }));
        EXPECT_EQ(kioskWindow().content->exclusive, nullptr);
        letGo();
        holdGesture(fullHold);
        for (const auto* password : { "abc ", "abc" }) {
            EXPECT_TRUE(controller->isActive());
            sealViews.prompt->password.set(password);
            sealViews.prompt->submit();
        }
        EXPECT_FALSE(controller->isActive());
        EXPECT_EQ(exits, 2);
    }

    TEST_F(KioskControllerTest, RestoresWhatItFoundAndSurvivesItsOwner)
    {
        application.options = PresentationOptions::HideDock;
        ASSERT_TRUE(start(siteSettings()));
        holdGesture(500ms);
        controller.reset();
        EXPECT_EQ(application.options, PresentationOptions::HideDock);
        EXPECT_EQ(exits, 0);
        runLoop.advance(1s);
        screens.plugIn({ 8, "Wall", { 1512, 0, 800, 600 }, 0 });
        EXPECT_EQ(eventMonitors.send(keyDown(keys::s, gesture)), pass);
    }

} // namespace

} // namespace quillox
