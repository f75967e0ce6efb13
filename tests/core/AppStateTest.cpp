#include "app/AppState.h"
#include "app/AppDelegate.h"
#include "app/QuilloxApp.h"
#include "core/SetupMachine.h"
#include "ui/AutoStartCountdownOverlay.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Countdown = std::optional<int>;
    constexpr auto accessibilitySettings
        = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

    class AppStateTest : public testing::Test, protected SetupMachine {
    protected:
        AppDelegate delegate()
        {
            return { { runLoop, accessibility, instances, application }, state(), updates,
                QuilloxApp::bundleIdentifier };
        }
    };

    TEST_F(AppStateTest, CountsDownAndSeals)
    {
        store(true, siteSettings());
        state().beginAutoStart(5);
        for (const int left : { 5, 4, 3, 2, 1 }) {
            EXPECT_EQ(AutoStartCountdownOverlay(state()).title(),
                "SEALING IN " + std::to_string(left) + "s");
            EXPECT_FALSE(controller->isActive());
            runLoop.advance(1s);
        }
        EXPECT_TRUE(controller->isActive() && state().isKioskActive.get());
        EXPECT_EQ(state().autoStartCountdown.get(), std::nullopt);
        controller->stop();
        EXPECT_FALSE(state().isKioskActive.get());
        EXPECT_EQ(runLoop.activeTimers(), 0U);
    }

    TEST_F(AppStateTest, CountdownRestartsIsCancelledAndNeedsASource)
    {
        state().beginAutoStart(5);
        EXPECT_EQ(state().autoStartCountdown.get(), std::nullopt);

        state().settings.set(siteSettings());
        state().beginAutoStart(5);
        runLoop.advance(1500ms);
        state().beginAutoStart(2);
        EXPECT_EQ(state().autoStartCountdown.get(), Countdown(2));
        runLoop.advance(900ms);
        EXPECT_EQ(state().autoStartCountdown.get(), Countdown(2)) << "a fresh timer";

        AutoStartCountdownOverlay(state()).cancel();
        EXPECT_FALSE(AutoStartCountdownOverlay(state()).isShown());
        runLoop.advance(10s);
        EXPECT_FALSE(controller->isActive());

        // A value that went missing counts as the last second.
        state().beginAutoStart(5);
        state().autoStartCountdown.set(std::nullopt);
        runLoop.advance(1s);
        EXPECT_TRUE(controller->isActive());
    }

    TEST_F(AppStateTest, WhatIsScheduledDoesNothingOnceItsOwnerIsGone)
    {
        auto settings = siteSettings();
        settings.autoStartKiosk = true;
        store(true, settings);
        static_cast<void>(delegate().applicationDidFinishLaunching());
        runLoop.runPosted();
        EXPECT_EQ(state().autoStartCountdown.get(), std::nullopt) << "the delegate is gone";

        state().beginAutoStart(1);
        made.reset();
        runLoop.advance(2s);
        EXPECT_FALSE(controller->isActive());
    }

    TEST_F(AppStateTest, AsksForAccessibilityWhenNoLockIsPossible)
    {
        accessibility.isTrusted = false;
        state().launchKiosk();
        EXPECT_TRUE(dialogs.alerts.empty()) << "without a source nothing happens";

        state().settings.set(siteSettings());
        state().launchKiosk();
        ASSERT_EQ(dialogs.alerts.size(), 1U);
        EXPECT_EQ(dialogs.alerts[0].message, "Grant Accessibility permission");
        EXPECT_EQ(accessibility.prompts, 1);
        EXPECT_TRUE(defaults.saves.empty() && !controller->isActive());
        dialogs.press(1);
        EXPECT_TRUE(workspace.opened.empty());
        dialogs.press(0);
        EXPECT_EQ(workspace.opened, std::vector<std::string> { accessibilitySettings });

        canCreateTap = true;
        state().launchKiosk();
        EXPECT_TRUE(controller->isActive());
    }

    TEST_F(AppStateTest, SaysSoWhenTheRunIsRefused)
    {
        state().settings.set(siteSettings());
        ASSERT_TRUE(controller->start(siteSettings(), nullptr));
        state().launchKiosk();
        ASSERT_EQ(dialogs.alerts.size(), 1U);
        EXPECT_EQ(dialogs.alerts[0].message, "Couldn't lock the keyboard — kiosk not started");
        EXPECT_FALSE(state().isKioskActive.get());
        EXPECT_EQ(KioskSettings::load(defaults), siteSettings()) << "saved all the same";
    }

    TEST_F(AppStateTest, LocksNothingWithoutAWebEngine)
    {
        windows.hasEngine = false;
        state().settings.set(siteSettings());
        state().launchKiosk();
        ASSERT_EQ(dialogs.alerts.size(), 1U);
        EXPECT_EQ(dialogs.alerts[0].message, "The web engine is missing — kiosk not started");
        EXPECT_FALSE(controller->start(siteSettings(), nullptr));
        EXPECT_TRUE(windows.windows.empty() && defaults.saves.empty());
        EXPECT_FALSE(state().isKioskActive.get() || controller->isActive());
        dialogs.press(0);
    }

    TEST_F(AppStateTest, LaunchDecidesWhetherToSeal)
    {
        enum Missing { nothing, onboarding, autoStart, source, trust };
        for (const auto missing : { nothing, onboarding, autoStart, source, trust }) {
            SCOPED_TRACE(static_cast<int>(missing));
            auto settings = missing == source ? KioskSettings {} : siteSettings();
            settings.autoStartKiosk = missing != autoStart;
            store(missing != onboarding, settings);
            accessibility.isTrusted = missing != trust;
            made.reset();
            auto launch = delegate();
            EXPECT_TRUE(launch.applicationDidFinishLaunching());
            EXPECT_EQ(journal.take().back(), "start updater");
            EXPECT_EQ(state().autoStartCountdown.get(), std::nullopt) << "the loop is not free";
            runLoop.runPosted();
            EXPECT_EQ(
                state().autoStartCountdown.get(), missing == nothing ? Countdown(5) : std::nullopt);
            EXPECT_TRUE(dialogs.alerts.empty() && accessibility.prompts == 0);
        }
    }

} // namespace

} // namespace quillox
