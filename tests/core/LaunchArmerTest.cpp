#include "lockdown/LaunchArmer.h"
#include "fakes/FakeEventMonitors.h"
#include "fakes/FakeKeyboard.h"
#include "fakes/FakeRunLoop.h"
#include "lockdown/KeyDecision.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using enum EventMonitors::Verdict;

    class LaunchArmerTest : public testing::Test {
    protected:
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

    TEST_F(LaunchArmerTest, CompletesOncePerPress)
    {
        int completed = 0;
        armer.onComplete = [&] { ++completed; };
        armer.start();
        for (int holds = 1; holds <= 2; ++holds) {
            press();
            runLoop.advance(1020ms);
            press(); // The keyboard repeats it.
            runLoop.advance(3s);
            EXPECT_EQ(completed, holds);
            release();
        }
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

} // namespace

} // namespace quillox
