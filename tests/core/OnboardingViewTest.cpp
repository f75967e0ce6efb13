#include "ui/OnboardingView.h"
#include "app/AppDelegate.h"
#include "app/QuilloxApp.h"
#include "core/SetupMachine.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    class OnboardingViewTest : public testing::Test, protected SetupMachine {
    protected:
        OnboardingViewTest() { view.appear(); }

        void goTo(int step)
        {
            while (view.step() < step)
                view.showsSetUpLater() ? view.setUpLater() : view.goOn();
        }

        OnboardingView view { state(),
            { { runLoop, eventMonitors, keyboard }, accessibility, workspace } };
    };

    TEST_F(OnboardingViewTest, StepsOfferWhatTheyAllow)
    {
        const struct {
            int step;
            bool isTrusted, hasSource, showsBack, showsLater, isEnabled;
            const char* primary;
        } rows[] {
            { 0, false, false, false, false, true, "CONTINUE" },
            { 1, false, false, true, true, false, "CONTINUE" },
            { 1, true, false, true, false, true, "CONTINUE" },
            { 2, false, false, true, false, true, "CONTINUE" },
            { 3, true, false, true, false, false, "FINISH SETUP" },
            { 3, false, true, true, false, true, "FINISH SETUP" },
        };
        for (const auto& row : rows) {
            accessibility.isTrusted = row.isTrusted;
            state().settings.set(row.hasSource ? siteSettings() : KioskSettings {});
            view.appear();
            EXPECT_EQ(view.step(), 0);
            goTo(row.step);
            EXPECT_EQ(view.showsBack(), row.showsBack) << row.step;
            EXPECT_EQ(view.showsSetUpLater(), row.showsLater) << row.step;
            EXPECT_EQ(view.isPrimaryEnabled(), row.isEnabled) << row.step;
            EXPECT_EQ(view.primaryTitle(), row.primary);
            EXPECT_EQ(view.badge(), row.isTrusted ? "GRANTED" : "NOT GRANTED YET");
            view.goOn();
            const bool finished = row.step == 3 && row.isEnabled;
            EXPECT_EQ(view.step(), row.step + (row.isEnabled && !finished)) << row.step;
            EXPECT_EQ(state().hasOnboarded.get(), finished);
            EXPECT_EQ(stored().startURL().has_value(), finished) << "stored at the end only";
        }
        view.goBack();
        EXPECT_EQ(view.step(), 2);
        view.setUpLater();
        EXPECT_EQ(view.step(), 2);
        runLoop.advance(2s);
    }

    TEST_F(OnboardingViewTest, FollowsThePermissionWhileItIsShown)
    {
        accessibility.isTrusted = false;
        view.appear();
        goTo(1);
        int changes = 0;
        const auto observation = view.observe([&] { ++changes; });
        runLoop.advance(10s);
        EXPECT_EQ(changes, 0);
        accessibility.isTrusted = true;
        runLoop.advance(1s);
        EXPECT_EQ(view.badge(), "GRANTED");
        EXPECT_TRUE(view.isPrimaryEnabled() && changes == 1);
        view.disappear();
        EXPECT_EQ(runLoop.activeTimers(), 0U);

        view.openSystemSettings();
        view.openSetupGuide();
        view.relaunch();
        EXPECT_EQ(workspace.opened,
            (std::vector<std::string> {
                "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility",
                "quillox:setup-guide" }));
        EXPECT_EQ(workspace.relaunches, 1);
    }

    TEST_F(OnboardingViewTest, GestureIsPractisedOnItsStepAndStartsNothing)
    {
        state().settings.set(siteSettings());
        for (const int step : { 0, 1, 2, 3 }) {
            goTo(step);
            EXPECT_EQ(isWatchingForGesture(), step == 2) << step;
        }
        keyboard.down = { keys::s };
        view.goBack();
        hold(true);
        EXPECT_FALSE(view.hasPracticed()) << "S was down before";
        hold(false);
        hold(true, 500ms);
        EXPECT_EQ(view.practiceBar().text, "TRY IT NOW - HOLD");
        EXPECT_NEAR(view.practiceBar().fill, 0.5, 0.02);
        EXPECT_TRUE(view.practiceShowsKeyCaps());
        hold(false);
        EXPECT_EQ(view.practiceBar().fill, 0);
        hold(true);
        EXPECT_EQ(view.practiceBar(), (SealBar { "✓ SEALED - YOU'VE GOT IT", 1 }));
        EXPECT_FALSE(view.practiceShowsKeyCaps() || controller->isActive());
        view.disappear();
        EXPECT_FALSE(isWatchingForGesture());
        view.appear();
        EXPECT_FALSE(view.hasPracticed());
    }

    TEST_F(OnboardingViewTest, TypedAddressOutlastsTheWayBackAndEndsTheGuide)
    {
        AppDelegate delegate(
            { runLoop, accessibility, instances, application }, state(), updates, "");
        const QuilloxApp app(delegate, state());
        EXPECT_EQ(app.rootView(), RootView::Onboarding);
        goTo(3);
        auto field = view.urlField();
        field.onSubmit();
        EXPECT_FALSE(state().hasOnboarded.get());
        field.text.set("https://museum.example/");
        view.goBack();
        view.goOn();
        EXPECT_EQ(view.urlField().text.get(), "https://museum.example/");
        view.urlField().onSubmit();
        EXPECT_TRUE(state().hasOnboarded.get());
        EXPECT_EQ(stored(), siteSettings());
        EXPECT_TRUE(defaults.boolean("hasOnboarded"));
        runLoop.advance(1799ms);
        EXPECT_EQ(app.rootView(), RootView::Finishing);
        runLoop.advance(1ms);
        EXPECT_EQ(app.rootView(), RootView::Operator);
    }

} // namespace

} // namespace quillox
