#include "fakes/FakeEventMonitors.h"
#include "fakes/FakeKeyboard.h"
#include "fakes/FakeLockdown.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeSystemLog.h"
#include "lockdown/DisplaySleepBlocker.h"
#include "lockdown/LaunchArmer.h"
#include "lockdown/SealPrompt.h"
#include "lockdown/SystemKeyBlocker.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Lines = std::vector<std::string>;
    using enum ModifierFlags;
    using enum EventMonitors::Verdict;
    using Action = KeyDecision::Action;
    constexpr auto gesture = Command | Shift;

    TEST(KeyDecisionTest, FollowsItsTable)
    {
        using enum EventType;
        constexpr KeyCode q = 12, tab = 48, left = 123;
        struct Row {
            EventType type;
            KeyCode key;
            ModifierFlags flags;
            bool isSDown;
            KeyDecision expected;
            std::int16_t subtype = 0;
        };
        for (const auto& row : std::vector<Row> {
                 { TapDisabledByTimeout, 0, gesture, true, { Action::ReenableTap, Pass } },
                 { TapDisabledByUserInput, 1, None, false, { Action::ReenableTap, Pass } },
                 { SystemDefined, 0, None, false, { Action::None, Swallow }, 8 },
                 { SystemDefined, 1, gesture, false, { Action::None, Pass }, 7 },
                 { KeyDown, keys::s, gesture, true, { Action::BeginHold, Swallow } },
                 { KeyDown, keys::s, gesture | Option, true, { Action::BeginHold, Swallow } },
                 { KeyDown, keys::s, Command, true, { Action::None, Swallow } },
                 { KeyDown, keys::s, Shift, true, { Action::None, Pass } },
                 { FlagsChanged, keys::s, Shift, false, { Action::CancelHold, Pass } },
                 { KeyUp, keys::s, gesture, true, { Action::CancelHold, Pass } },
                 { KeyUp, keys::s, gesture, false, { Action::ArmAndCancelHold, Pass } },
                 { LeftMouseDown, keys::s, gesture, false, { Action::None, Pass } },
                 { FlagsChanged, 56, gesture, true, { Action::None, Pass } },
                 { FlagsChanged, 56, Command, true, { Action::CancelHold, Pass } },
                 { KeyDown, tab, Command, false, { Action::None, Swallow } },
                 { KeyDown, left, Control, false, { Action::None, Swallow } },
                 { KeyDown, 14, Option, false, { Action::None, Pass } },
                 { KeyDown, keys::escape, None, false, { Action::None, Pass } },
                 { KeyUp, q, Command, false, { Action::None, Pass } },
             }) {
            const Event event { row.type, row.key, row.flags, false, row.subtype };
            EXPECT_EQ(decideKey(event, row.isSDown), row.expected)
                << "type " << static_cast<unsigned>(row.type) << ", key " << row.key << ", flags "
                << static_cast<unsigned>(row.flags);
        }
    }

    class SystemKeyBlockerTest : public testing::Test {
    protected:
        SystemKeyBlockerTest()
        {
            blocker.onExitCombo = [this] {
                ++exits;
                progressAtExit = progress.back();
            };
            blocker.onHoldProgress = [this](double value) { progress.push_back(value); };
        }

        Journal journal;
        FakeKeyboard keyboard { journal };
        FakeRunLoop runLoop;
        FakeSystemLog log;
        SystemKeyBlocker blocker { { runLoop, keyboard, keyboard, log } };
        int exits = 0;
        std::vector<double> progress;
        double progressAtExit = -1;
    };

    TEST_F(SystemKeyBlockerTest, ExitsOncePerFullHold)
    {
        ASSERT_TRUE(blocker.start());
        EXPECT_TRUE(blocker.start());
        EXPECT_EQ(keyboard.created, 1);

        keyboard.press(keys::s, gesture);
        runLoop.advance(500ms);
        EXPECT_EQ(progress.size(), 30U) << "sixty a second";
        EXPECT_NEAR(progress.back(), 0.5, 0.02);
        keyboard.release(keys::s, gesture);
        runLoop.advance(2s);
        EXPECT_EQ(progress.back(), 0.0);
        EXPECT_EQ(exits, 0);

        keyboard.press(keys::s, gesture);
        runLoop.advance(1020ms);
        EXPECT_EQ(progress.at(progress.size() - 2), 1.0);
        EXPECT_EQ(progressAtExit, 0.0);
        keyboard.press(keys::s, gesture); // The keyboard repeats.
        runLoop.advance(2s);
        EXPECT_EQ(exits, 1);
        keyboard.release(keys::s, gesture);
        keyboard.press(keys::s, gesture);
        runLoop.advance(500ms);
        blocker.stop();
        runLoop.advance(520ms);
        EXPECT_EQ(exits, 2) << "a hold that runs is not the tap's";
    }

    TEST_F(SystemKeyBlockerTest, BeginsAHoldOnlyWithAFreshS)
    {
        const auto hold = [this] {
            keyboard.press(keys::s, gesture);
            runLoop.advance(2s);
        };
        keyboard.down.insert(keys::s);
        ASSERT_TRUE(blocker.start());
        hold();
        EXPECT_TRUE(progress.empty()) << "S was down when the run was sealed";
        // A release that the keyboard does not confirm arms nothing.
        keyboard.send({ .type = EventType::KeyUp, .keyCode = keys::s, .flags = gesture });
        hold();

        keyboard.release(keys::s, gesture);
        keyboard.press(keys::s, gesture);
        runLoop.advance(300ms);
        for (const auto flags : { Command, gesture })
            keyboard.send({ .type = EventType::FlagsChanged, .flags = flags });
        hold();
        EXPECT_EQ(progress.back(), 0.0) << "Shift had been let go";

        blocker.stop();
        keyboard.down.clear();
        keyboard.downInSession = { keys::s };
        ASSERT_TRUE(blocker.start());
        hold();
        EXPECT_EQ(exits, 0);
    }

    TEST_F(SystemKeyBlockerTest, SaysThatItCannotStartAndStartsWhenItCan)
    {
        keyboard.allowsTaps = false;
        EXPECT_FALSE(SystemKeyBlocker::canCreateTap(keyboard));
        EXPECT_FALSE(blocker.start() || blocker.isRunning());
        EXPECT_EQ(log.lines(),
            (Lines { "Quillox: could not create event tap — Accessibility permission missing." }));
        keyboard.allowTaps();
        EXPECT_TRUE(blocker.isRunning());
        keyboard.send({ .type = EventType::TapDisabledByTimeout });
        EXPECT_EQ(keyboard.reenabled, 1);

        blocker.stop();
        blocker.stop();
        EXPECT_TRUE(SystemKeyBlocker::canCreateTap(keyboard));
        EXPECT_EQ(keyboard.lastOptions, EventTaps::Options::ListenOnly);
        EXPECT_FALSE(keyboard.isTapped());

        keyboard.allowsTaps = false;
        EXPECT_FALSE(blocker.start());
        blocker.stop();
        keyboard.allowTaps();
        EXPECT_FALSE(blocker.isRunning()) << "nobody wants it any more";
    }

    TEST(DisplaySleepBlockerTest, LogsTheSystemsCodeAndReleasesNothing)
    {
        Journal journal;
        FakePowerAssertions power(journal);
        FakeSystemLog log;
        DisplaySleepBlocker blocker(power, log);
        power.result = static_cast<std::int32_t>(0xE00002E2);
        blocker.start();
        blocker.stop();
        EXPECT_EQ(journal.take().size(), 1U);
        EXPECT_EQ(log.lines(),
            (Lines { "Quillox: could not create display-sleep assertion (error -536870174)." }));
    }

    struct LaunchArmerTest : testing::Test {
        EventMonitors::Verdict send(EventType type, ModifierFlags flags, KeyCode key = keys::s)
        {
            return monitors.send({ .type = type, .keyCode = key, .flags = flags });
        }
        void press()
        {
            keyboard.down.insert(keys::s);
            EXPECT_EQ(send(EventType::KeyDown, sealModifiers), Swallow);
        }
        void release()
        {
            keyboard.down.clear();
            EXPECT_EQ(send(EventType::KeyUp, sealModifiers), Pass);
        }

        Journal journal;
        FakeRunLoop runLoop;
        FakeEventMonitors monitors;
        FakeKeyboard keyboard { journal };
        LaunchArmer armer { { runLoop, monitors, keyboard } };
    };

    TEST_F(LaunchArmerTest, LeavesEveryOtherKeyAlone)
    {
        using enum ModifierFlags;
        armer.start();
        EXPECT_EQ(send(EventType::KeyDown, Command), Pass);
        EXPECT_EQ(send(EventType::KeyDown, sealModifiers, 0), Pass);
        EXPECT_EQ(send(EventType::FlagsChanged, sealModifiers), Pass);
        EXPECT_EQ(send(EventType::KeyDown, sealModifiers | Option), Swallow);
    }

    TEST_F(LaunchArmerTest, WhatEndsAHoldAndWhetherThePressThatFollowsBeginsOne)
    {
        const auto restart = [&] { armer.stop(), armer.start(), armer.start(); };
        const struct {
            const char* end;
            std::function<void()> happen;
            bool beginsAnother;
        } rows[] {
            { "a modifier up", [&] { send(EventType::FlagsChanged, ModifierFlags::Shift); },
                false },
            { "S up", [&] { release(); }, true },
            { "one S up of two", [&] { send(EventType::KeyUp, sealModifiers); }, false },
            { "restart, S down", restart, false },
            { "restart, S up", [&] { keyboard.down.clear(), restart(); }, true },
        };
        for (const auto& row : rows) {
            armer.start();
            release();
            press();
            runLoop.advance(300ms);
            EXPECT_GT(armer.progress.get(), 0) << row.end;
            row.happen();
            EXPECT_EQ(armer.progress.get(), 0) << row.end;
            press();
            runLoop.advance(300ms);
            EXPECT_EQ(armer.progress.get() > 0, row.beginsAnother) << row.end;
        }
        EXPECT_EQ(monitors.activeMonitors(), 1U);
    }

    TEST(SealPromptTest, CancelsTenSecondsAfterTheLastChangeOfTheText)
    {
        FakeRunLoop runLoop;
        int cancelled = 0;
        SealPrompt prompt({ .title = "",
                              .message = "",
                              .validate = [](const std::string&) { return false; },
                              .onSuccess = {},
                              .onCancel = [&] { ++cancelled; } },
            runLoop);
        prompt.appear();
        runLoop.advance(9900ms);
        prompt.field().text.set("a");
        runLoop.advance(9900ms);
        prompt.submit(); // Empties the field.
        runLoop.advance(9900ms);
        prompt.submit(); // Changes nothing.
        EXPECT_EQ(cancelled, 0);
        runLoop.advance(20s);
        EXPECT_EQ(cancelled, 1);
    }

} // namespace

} // namespace quillox
