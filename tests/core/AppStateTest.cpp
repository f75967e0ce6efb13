#include "app/AppState.h"
#include "app/AppDelegate.h"
#include "app/QuilloxApp.h"
#include "core/SealedMachine.h"
#include "ui/AutoStartCountdownOverlay.h"
#include "ui/SetupView.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Countdown = std::optional<int>;
    constexpr auto accessibilitySettings
        = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

    class AppStateTest : public testing::Test, protected SealedMachine {
    protected:
        AppState& state()
        {
            if (!made)
                made = std::make_unique<AppState>(
                    AppState::Machine { runLoop, defaults, fileSystem, accessibility, dialogs,
                        workspace, application },
                    *controller, [this] { return canCreateTap; });
            return *made;
        }

        AppDelegate delegate()
        {
            return { { runLoop, accessibility, instances, application }, state(),
                QuilloxApp::bundleIdentifier, nullptr };
        }

        void store(bool hasOnboarded, const KioskSettings& settings)
        {
            defaults.setBoolean("hasOnboarded", hasOnboarded);
            settings.save(defaults);
        }

        FakeRunLoop runLoop;
        FakeDefaultsStore defaults;
        FakeAccessibilityTrust accessibility;
        FakeDialogs dialogs;
        FakeWorkspace workspace;
        FakeRunningApplications instances;
        bool canCreateTap = false;
        std::unique_ptr<KioskController> controller = makeController();
        std::unique_ptr<AppState> made;
    };

    TEST_F(AppStateTest, CountsDownAndSeals)
    {
        store(true, siteSettings());
        state().beginAutoStart(5);
        for (const int left : { 5, 4, 3, 2, 1 }) {
            EXPECT_EQ(state().autoStartCountdown.get(), Countdown(left));
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

        AutoStartCountdownOverlay overlay(state());
        EXPECT_EQ(overlay.title(), "SEALING IN 2s");
        overlay.cancel();
        EXPECT_FALSE(overlay.isShown());
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

    TEST_F(AppStateTest, OnboardingEndsWithItsInterlude)
    {
        auto appDelegate = delegate();
        QuilloxApp app(appDelegate, state());
        EXPECT_EQ(app.rootView(), RootView::Onboarding);
        state().settings.set(siteSettings());
        state().completeOnboarding();
        EXPECT_EQ(app.rootView(), RootView::Finishing);
        EXPECT_TRUE(defaults.boolean("hasOnboarded"));
        EXPECT_EQ(KioskSettings::load(defaults), siteSettings());
        runLoop.advance(1799ms);
        EXPECT_EQ(app.rootView(), RootView::Finishing);
        runLoop.advance(1ms);
        EXPECT_EQ(app.rootView(), RootView::Operator);
    }

    TEST_F(AppStateTest, ChoosesAndClearsALocalSource)
    {
        for (const auto* path : { "", "/" }) {
            const bool isChosen = *path != '\0';
            state().clearLocalSource();
            state().chooseLocalSource();
            dialogs.choose(isChosen ? std::optional<std::string>("/start.htm") : std::nullopt);
            const auto& settings = state().settings.get();
            EXPECT_EQ(settings.sourceKind, isChosen ? SourceKind::local : SourceKind::remote);
            EXPECT_EQ(settings.localPath, path);
            EXPECT_EQ(settings.localEntry, isChosen ? "start.htm" : "index.html");
            EXPECT_EQ(KioskSettings::load(defaults), settings);
        }
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
            EXPECT_EQ(state().autoStartCountdown.get(), std::nullopt) << "the loop is not free";
            runLoop.runPosted();
            EXPECT_EQ(
                state().autoStartCountdown.get(), missing == nothing ? Countdown(5) : std::nullopt);
            EXPECT_TRUE(dialogs.alerts.empty() && accessibility.prompts == 0);
        }
    }

    TEST_F(AppStateTest, SetupSaysWhatIsMissingAndSealsOnce)
    {
        SetupView view(state(), { runLoop, eventMonitors, keyboard });
        int changes = 0;
        const auto observation = view.observe([&] { ++changes; });
        EXPECT_EQ(view.sealTitle(), "SET A URL OR FOLDER FIRST");
        view.seal();
        EXPECT_FALSE(state().hasOnboarded.get());

        view.setAddress("https://museum.example/");
        EXPECT_EQ(KioskSettings::load(defaults).url, "https://museum.example/");
        state().settings.update(
            [](KioskSettings& settings) { settings.requireExitPassword = true; });
        EXPECT_EQ(view.sealTitle(), "SET AN EXIT PASSWORD FIRST");
        EXPECT_FALSE(view.canSeal());
        state().settings.update([](KioskSettings& settings) { settings.exitPassword = "abc"; });
        EXPECT_EQ(changes, 3);

        view.seal();
        ASSERT_TRUE(view.prompt());
        view.prompt()->field().text.set("abc");
        view.prompt()->submit();
        EXPECT_TRUE(controller->isActive() && state().hasOnboarded.get());
        EXPECT_FALSE(view.prompt() || view.isEnabled() || view.canSeal());
        runLoop.advance(2s);
    }

    TEST_F(AppStateTest, GestureInSetupSealsOnceSIsUp)
    {
        const auto hold = [&](bool isDown) {
            const auto type = isDown ? EventType::KeyDown : EventType::KeyUp;
            keyboard.down = isDown ? std::set { keys::s } : std::set<KeyCode> {};
            eventMonitors.send({ .type = type, .keyCode = keys::s, .flags = sealModifiers });
            runLoop.advance(1100ms);
        };
        SetupView view(state(), { runLoop, eventMonitors, keyboard });
        view.appear();
        hold(true);
        EXPECT_EQ(view.hintOverlay().hint, "SET A URL OR FOLDER FIRST");
        EXPECT_FALSE(view.isWaitingForRelease());

        state().settings.set(siteSettings());
        hold(false);
        hold(true);
        EXPECT_TRUE(view.isWaitingForRelease() && !controller->isActive());
        hold(false);
        EXPECT_TRUE(controller->isActive() && !view.isWaitingForRelease());
        controller->stop();
        hold(true);
        runLoop.advance(10s);
        EXPECT_TRUE(controller->isActive()); // However long S is held.
        controller->stop();
        hold(false);

        state().settings.update([](KioskSettings& settings) {
            settings.requireExitPassword = true;
            settings.exitPassword = "abc";
        });
        hold(true);
        ASSERT_TRUE(view.prompt());
        EXPECT_EQ(eventMonitors.activeMonitors(), 0U);
        runLoop.advance(10s);
        EXPECT_FALSE(view.prompt() || controller->isActive());
        hold(false);
        state().beginAutoStart(9);
        EXPECT_EQ(eventMonitors.activeMonitors(), 0U);
        state().cancelAutoStart();
        hold(true);
        EXPECT_TRUE(view.prompt());
    }

} // namespace

} // namespace quillox
