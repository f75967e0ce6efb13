#include "ui/OperatorView.h"
#include "core/SetupMachine.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    class OperatorViewTest : public testing::Test, protected SetupMachine {
    protected:
        OperatorViewTest() { state().settings.set(siteSettings()); }

        template <typename Change> void change(Change change) { state().settings.update(change); }

        void appear()
        {
            view.appear();
            runLoop.advance(1s);
        }
        void requirePassword(const std::string& password)
        {
            change([&](KioskSettings& settings) {
                settings.requireExitPassword = true;
                settings.exitPassword = password;
            });
        }
        OperatorView view { state(),
            { { runLoop, eventMonitors, keyboard }, { fileSystem, screens, watchdog, updates },
                usageTracker.store(), workspace },
            "1.2" };
    };

    TEST_F(OperatorViewTest, BarAndBannerSayTheFirstThingThatIsMissing)
    {
        const SealBar source { "ADD A SOURCE TO SEAL" },
            password { "SET AN EXIT PASSWORD TO SEAL" }, ready { "HOLD ⌘⇧S TO SEAL" };
        const struct {
            const char *url, *password;
            bool isRequired;
            SealBar bar;
            const char* hint;
        } rows[] {
            { "https://", "", true, source, "SET A URL OR FOLDER FIRST" },
            { "https://", "abc", true, source, "SET A URL OR FOLDER FIRST" },
            { "https://a.example", "", true, password, "SET AN EXIT PASSWORD FIRST" },
            { "https://a.example", "", false, ready, "" },
            { "https://a.example", "abc", true, ready, "" },
        };
        appear();
        for (const auto& row : rows) {
            SCOPED_TRACE(row.bar.text);
            change([&](KioskSettings& settings) {
                settings.url = row.url;
                settings.exitPassword = row.password;
                settings.requireExitPassword = row.isRequired;
            });
            EXPECT_EQ(view.sealAction(), row.bar);
            EXPECT_FALSE(view.hintBanner().isVisible || view.holdBanner().isShown());
            hold(true, 500ms);
            const bool isReady = row.bar == ready;
            EXPECT_EQ(view.sealAction().text, isReady ? "SEALING IN PROGRESS" : row.bar.text);
            EXPECT_NEAR(view.sealAction().fill, isReady ? 0.5 : 0, 0.02);
            EXPECT_EQ(view.hintBanner(), (SealHintOverlay { row.hint, !isReady }));
            EXPECT_EQ(view.holdBanner().isShown(), isReady);
            hold(false);
            EXPECT_EQ(view.sealAction(), row.bar);
        }
        requirePassword("");
        for (const auto* url : { "https://", "https://a.example" }) {
            change([&](KioskSettings& settings) { settings.url = url; });
            hold(true, 15s);
            EXPECT_FALSE(controller->isActive() || view.launchPrompt() || !dialogs.alerts.empty());
            EXPECT_TRUE(isWatchingForGesture() && !view.isWaitingForRelease());
            hold(false);
        }
    }

    TEST_F(OperatorViewTest, LaunchesOnceSIsUpOrTenSecondsHavePassed)
    {
        appear();
        hold(true, 1100ms);
        EXPECT_TRUE(view.isWaitingForRelease() && view.holdBanner().isShown());
        EXPECT_EQ(view.holdBanner().title, "SEALING IN PROGRESS");
        hold(false, 60ms);
        EXPECT_TRUE(controller->isActive() && !view.isWaitingForRelease());
        EXPECT_FALSE(isWatchingForGesture() || view.isEnabled());

        keyboard.down = { keys::s };
        controller->stop();
        hold(true, 2s);
        EXPECT_FALSE(view.isWaitingForRelease()) << "S was down before";
        hold(false);
        hold(true, 10900ms);
        EXPECT_FALSE(controller->isActive());
        runLoop.advance(150ms);
        EXPECT_TRUE(controller->isActive());
        controller->stop();

        hold(false);
        hold(true, 1100ms);
        view.disappear();
        hold(false);
        EXPECT_FALSE(controller->isActive() || view.isWaitingForRelease());
    }

    TEST_F(OperatorViewTest, PasswordGuardsTheLaunch)
    {
        requirePassword("abc");
        appear();
        hold(true);
        ASSERT_TRUE(view.launchPrompt());
        EXPECT_EQ(
            view.launchPrompt()->question().message, "Enter the exit password to start kiosk mode");
        EXPECT_EQ(view.launchPrompt()->question().confirmLabel, "SEAL IT");
        for (const auto* wrong : { "", "ABC", "abc " }) {
            view.launchPrompt()->field().text.set(wrong);
            view.launchPrompt()->submit();
            ASSERT_TRUE(view.launchPrompt()) << wrong;
            EXPECT_TRUE(view.launchPrompt()->wrong.get());
        }
        runLoop.advance(10s); // It gives up by itself, as by Escape.
        EXPECT_FALSE(view.launchPrompt() || controller->isActive());
        EXPECT_TRUE(isWatchingForGesture());
        hold(false);
        hold(true);
        ASSERT_TRUE(view.launchPrompt());
        view.launchPrompt()->field().text.set("abc");
        view.launchPrompt()->submit();
        EXPECT_TRUE(controller->isActive() && !view.launchPrompt());
        EXPECT_FALSE(view.isWaitingForRelease());
    }

    TEST_F(OperatorViewTest, GestureIsWatchedForWhileNothingElseGoesOn)
    {
        requirePassword("abc");
        const struct {
            const char* what;
            std::function<void()> begin, end;
        } rows[] {
            { "prompt", [&] { hold(true); }, [&] { view.launchPrompt()->cancel(); } },
            { "sheet", [&] { view.openStats(); }, [&] { view.closeStats(); } },
            { "countdown", [&] { state().beginAutoStart(5); }, [&] { state().cancelAutoStart(); } },
            { "run", [&] { state().launchKiosk(); }, [&] { controller->stop(); } },
            { "other screen", [&] { view.disappear(); }, [&] { appear(); } },
        };
        EXPECT_FALSE(isWatchingForGesture());
        appear();
        for (const auto& row : rows) {
            EXPECT_TRUE(isWatchingForGesture()) << row.what;
            int changes = 0;
            const auto observation = view.observe([&] { ++changes; });
            row.begin();
            EXPECT_FALSE(isWatchingForGesture()) << row.what;
            const bool isElsewhere = row.what == std::string_view("other screen");
            EXPECT_EQ(view.isEnabled(), isElsewhere);
            EXPECT_EQ(changes > 0, !isElsewhere);
            row.end();
            EXPECT_TRUE(view.isEnabled()) << row.what;
            hold(false);
        }
        hold(true);
        view.openStats();
        EXPECT_FALSE(view.stats()) << "over the prompt";
        view.launchPrompt()->cancel();
        hold(false);
        // A run that begins otherwise, or another screen, takes away what is open.
        for (const bool isRun : { true, false }) {
            for (const bool isPrompt : { true, false }) {
                isPrompt ? hold(true) : view.openStats();
                isRun ? state().launchKiosk() : view.disappear();
                EXPECT_FALSE(view.launchPrompt() || view.stats() || isWatchingForGesture());
                isRun ? controller->stop() : appear();
                hold(false);
            }
        }
    }

    TEST_F(OperatorViewTest, LinksLeadToTheGuideAndTheSite)
    {
        view.openSetupGuide();
        view.openWebSite();
        EXPECT_EQ(workspace.opened,
            (std::vector<std::string> { "quillox:setup-guide", "https://quillox.orvendal.com/" }));
    }

} // namespace

} // namespace quillox
