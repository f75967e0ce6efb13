// What a sealed run lets its page do, and how it gets the page back.

#include "core/SealedMachine.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Domain = LoadError::Domain;
    constexpr auto pass = EventMonitors::Verdict::Pass;

    const std::string home = "https://museum.example/";
    const LoadError refused { Domain::UrlLoading, urlErrors::cannotConnectToHost, "" };
    const LoadError cancelled { Domain::UrlLoading, urlErrors::cancelled, "" };
    const LoadError interrupted { Domain::Engine, 102, "" };

    class KioskPageTest : public testing::Test, protected SealedMachine {
    protected:
        void start(KioskSettings settings = siteSettings())
        {
            ASSERT_TRUE(controller->start(settings, [] {}));
        }
        KioskSettings localSettings()
        {
            fileSystem.addFile("/site/index.html");
            auto settings = siteSettings();
            settings.sourceKind = SourceKind::local;
            settings.localPath = "/site";
            return settings;
        }
        NavigationDelegate& delegate() { return *page().navigationDelegate; }
        bool isCovered() const { return kioskViews.notice->offline.get(); }
        std::size_t loads() { return page().loads.size() + page().reloads; }

        std::unique_ptr<KioskController> controller = makeController();
    };

    TEST_F(KioskPageTest, KeepsThePageOnItsSite)
    {
        auto settings = siteSettings();
        settings.url = "https://Museum.Example/";
        settings.allowedDomains = { "partner.org" };
        start(settings);
        page().show(home);
        for (const auto& [address, isAllowed] : std::vector<std::pair<const char*, bool>> {
                 { "https://museum.example/a?b#c", true },
                 { "http://shop.museum.example/", true },
                 { "https://www.partner.org/", true },
                 { "https://evil.example/", false },
                 { "https://museum.example@evil.example/", false },
                 { "about:blank", false },
                 { "mailto:someone@museum.example", false },
                 { "", false },
             }) {
            EXPECT_EQ(delegate().shouldNavigate(address), isAllowed) << address;
            EXPECT_EQ(page().uiDelegate->shouldLoadInPlaceOfNewWindow(address), isAllowed);
        }
        EXPECT_FALSE(isCovered());
        controller->stop();
        EXPECT_FALSE(controller->isAllowed(*Url::parse(home)));

        settings.restrictToDomain = false;
        start(settings);
        EXPECT_TRUE(delegate().shouldNavigate("foo:%zz"));
        EXPECT_FALSE(delegate().shouldNavigate(""));
    }

    TEST_F(KioskPageTest, CoversThePageWhileItsServerIsAwayAndTriesAgain)
    {
        start();
        delegate().didFailProvisionalNavigation(cancelled);
        page().show(home);
        delegate().didFailProvisionalNavigation(interrupted);
        EXPECT_FALSE(isCovered());

        delegate().didFailNavigation(refused);
        delegate().didFailProvisionalNavigation(refused);
        EXPECT_TRUE(isCovered());
        runLoop.advance(4900ms);
        EXPECT_EQ(page().reloads, 0);
        runLoop.advance(10100ms);
        EXPECT_EQ(page().reloads, 3);
        page().show(home);
        EXPECT_FALSE(isCovered());
        runLoop.advance(1min);
        EXPECT_EQ(page().reloads, 3);
    }

    TEST_F(KioskPageTest, FollowsTheNetwork)
    {
        start();
        page().show(home);
        pathMonitors.tell(PathStatus::Unsatisfied);
        EXPECT_FALSE(isCovered()); // Not on the monitor's thread.
        runLoop.runPosted();
        EXPECT_TRUE(isCovered());
        pathMonitors.tell(PathStatus::Satisfied);
        runLoop.runPosted();
        EXPECT_EQ(page().reloads, 1);
        EXPECT_TRUE(isCovered());
        page().show(home);
        pathMonitors.tell(PathStatus::Satisfied);
        runLoop.runPosted();
        EXPECT_EQ(page().reloads, 1);

        pathMonitors.tell(PathStatus::Unsatisfied);
        controller->stop();
        runLoop.advance(1min);
        auto settings = siteSettings();
        settings.url = "http://127.0.0.1:8080/";
        start(settings);
        pathMonitors.tell(PathStatus::Unsatisfied);
        runLoop.runPosted();
        EXPECT_FALSE(isCovered());
    }

    TEST_F(KioskPageTest, LetsASlowServerAnswerAndGivesUpAnAddressThatIsGone)
    {
        start();
        page().show(home);
        delegate().didFailProvisionalNavigation(refused);
        runLoop.advance(5s);
        page().phase = LoadPhase::Provisional;
        runLoop.advance(5s);
        EXPECT_EQ(page().reloads, 2);
        runLoop.advance(9s);
        EXPECT_EQ(page().reloads, 2);
        page().phase = LoadPhase::Committed;
        runLoop.advance(2min);
        EXPECT_EQ(page().reloads, 2);

        page().phase = LoadPhase::Idle;
        runLoop.advance(1min);
        EXPECT_EQ(page().loads.size(), 2U);
        EXPECT_EQ(page().loads.back().url, home);
    }

    TEST_F(KioskPageTest, NeverShowsNothingWhenTheFirstPageIsLedAstray)
    {
        start();
        EXPECT_FALSE(delegate().shouldNavigate("http://portal.example/login"));
        delegate().didFailProvisionalNavigation(interrupted);
        EXPECT_TRUE(isCovered());
        runLoop.advance(5s);
        EXPECT_EQ(loads(), 2U);
    }

    TEST_F(KioskPageTest, NeverCoversALocalSite)
    {
        start(localSettings());
        EXPECT_TRUE(delegate().shouldNavigate("qxlocal://local/index.html"));
        EXPECT_FALSE(delegate().shouldNavigate(home));
        delegate().didFailProvisionalNavigation(refused);
        for (int crash = 0; crash < 3; ++crash)
            delegate().pageProcessDidEnd(PageProcessEnd::Crashed);
        runLoop.advance(1min);
        EXPECT_FALSE(isCovered());
        EXPECT_EQ(page().reloads, 2);
    }

    TEST_F(KioskPageTest, BringsACrashedPageBackWithGrowingPauses)
    {
        start();
        page().show(home);
        runLoop.advance(10s);
        delegate().pageProcessDidEnd(PageProcessEnd::Crashed);
        EXPECT_EQ(page().reloads, 1);
        EXPECT_TRUE(isCovered());
        EXPECT_EQ(
            log.lines().back(), "Quillox: the page's process crashed; loading the page again.");
        page().show(home);
        EXPECT_FALSE(isCovered());

        // A page that is the same trouble again and again is given up for the start page.
        auto before = loads();
        for (const auto pause : { 1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s }) {
            delegate().pageProcessDidEnd(PageProcessEnd::ExceededMemoryLimit);
            EXPECT_TRUE(isCovered());
            runLoop.advance(pause - 1ms);
            EXPECT_EQ(loads(), before) << pause.count();
            runLoop.advance(1ms);
            EXPECT_EQ(loads(), ++before);
        }
        EXPECT_EQ(page().reloads, 3);
        page().show(home);
        runLoop.advance(10s);
        delegate().networkProcessDidEnd();
        EXPECT_EQ(page().reloads, 4);
        EXPECT_EQ(log.lines().size(), 10U);
    }

    TEST_F(KioskPageTest, FindsAnotherPageWhenTheReloadedOneLeadsNowhere)
    {
        start();
        page().show(home);
        runLoop.advance(10s);
        delegate().pageProcessDidEnd(PageProcessEnd::Crashed);
        delegate().didCommitNavigation();
        delegate().didFailProvisionalNavigation(cancelled);
        delegate().didFailProvisionalNavigation(interrupted);
        runLoop.advance(5s);
        EXPECT_EQ(page().reloads, 2);

        // The pauses after a crash take the place of the retries.
        delegate().pageProcessDidEnd(PageProcessEnd::Crashed);
        runLoop.advance(900ms);
        EXPECT_EQ(page().reloads, 2);
        delegate().pageProcessDidEnd(PageProcessEnd::MadeRoom);
        EXPECT_TRUE(isCovered());
        runLoop.advance(1min);
        EXPECT_EQ(page().reloads, 2);
    }

    TEST_F(KioskPageTest, EndsAPageThatHangs)
    {
        start();
        page().show(home);
        runLoop.advance(20s);
        EXPECT_EQ(page().reloads, 0);
        page().isHung = true;
        runLoop.advance(4s); // Asked in vain; but there is another page now.
        page().isHung = false;
        page().show(home);
        runLoop.advance(1min);
        EXPECT_EQ(page().reloads, 0);
        page().isHung = true;
        runLoop.advance(9s);
        EXPECT_EQ(page().reloads, 1);
        EXPECT_EQ(log.lines(),
            (std::vector<std::string> { "Quillox: the page's process did not answer and was "
                                        "ended; loading the page again." }));
    }

    TEST_F(KioskPageTest, ReloadsOnlyWhatTheRulesAllow)
    {
        auto settings = siteSettings();
        settings.url = "https://museum.example/exhibits/";
        settings.restrictToPath = true;
        settings.showRefresh = settings.showHome = settings.showBack = true;
        start(settings);
        page().show("https://museum.example/exhibits/1");
        kioskViews.navBar->refreshTapped();
        EXPECT_EQ(page().reloads, 1);
        page().shownURL = "https://museum.example/admin"; // By a script, which nobody is asked.
        kioskViews.navBar->refreshTapped();
        EXPECT_EQ(page().reloads, 1);
        EXPECT_EQ(page().loads.back(), (UrlRequest { settings.url, 60s }));

        journal.take();
        kioskViews.navBar->backTapped();
        kioskViews.navBar->homeTapped();
        EXPECT_EQ(journal.take(), (std::vector<std::string> { "go back", "load " + settings.url }));
        EXPECT_EQ(kioskViews.navBar->backButton().state.get().alpha(), 0.3);
        page().hasBack = true;
        delegate().didCommitNavigation();
        EXPECT_EQ(kioskViews.navBar->backButton().state.get().alpha(), 1.0);
    }

    TEST_F(KioskPageTest, ColorsTheNotchBarAsThePageIs)
    {
        screens.plugIn({ 7, "Studio", { 0, 0, 1512, 982 }, 32 });
        auto settings = siteSettings();
        settings.avoidNotch = true;
        settings.notchBarColor = NotchBarColor::pageBackground;
        start(settings);
        const Color red { 1, 0, 0, 1 };
        const Color green { 0, 1, 0, 1 };
        EXPECT_EQ(kioskViews.notchColor->get(), Color::black());
        page().background = red;
        page().show(home);
        EXPECT_EQ(kioskViews.notchColor->get(), red);
        page().background = green;
        runLoop.advance(300ms);
        EXPECT_EQ(kioskViews.notchColor->get(), green);

        // On a screen without a housing there is no bar; back again it lies under the notice.
        screens.plugIn({ 7, "Studio", { 0, 0, 1512, 982 }, 0 });
        screens.plugIn({ 7, "Studio", { 0, 0, 1512, 982 }, 32 });
        EXPECT_EQ(kioskWindow().content->views.at(1).frame, (Rect { 0, 950, 1512, 32 }));
        controller->stop();

        settings.notchBarColor = NotchBarColor::black;
        start(settings);
        page().background = red;
        page().show(home);
        EXPECT_EQ(kioskViews.notchColor->get(), Color::black());
    }

    TEST_F(KioskPageTest, OnlyScrollsWhereThatIsAllThatIsAllowed)
    {
        auto settings = siteSettings();
        settings.scrollOnly = true;
        start(settings);
        constexpr KeyCode space = 49;
        EXPECT_EQ(eventMonitors.send(keyDown(keys::pageDown)), pass);
        EXPECT_NE(eventMonitors.send(keyDown(keys::returnKey)), pass);
        EXPECT_NE(eventMonitors.send(keyDown(space)), pass);
        controller->stop();
        start();
        EXPECT_EQ(eventMonitors.send(keyDown(space)), pass);
    }

} // namespace

} // namespace quillox
