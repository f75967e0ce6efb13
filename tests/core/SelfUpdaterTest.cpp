#include "resilience/update/SelfUpdater.h"
#include "app/LaunchHealth.h"
#include "core/SetupMachine.h"
#include "fakes/FakeApplication.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeSystemLog.h"
#include "fakes/FakeUpdate.h"
#include "resilience/update/UpdateHealth.h"
#include "resilience/update/UpdateTrial.h"

#include <gtest/gtest.h>
#include <optional>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Kind = UpdateFeed::Outcome::Kind;

    /// One that tells the visitors nothing and takes charge, as the application's does.
    struct Delegate final : Updater::Delegate {
        bool takesCharge = true;
        bool showsScheduled = false;
        int announcements = 0;
        std::function<void()> installNow;

        bool supportsGentleScheduledUpdateReminders() const override { return true; }
        bool shouldHandleShowingScheduledUpdate() const override { return showsScheduled; }
        bool willInstallUpdateOnQuit(std::function<void()> install) override
        {
            ++announcements;
            installNow = std::move(install);
            return takesCharge;
        }
    };

    class SelfUpdaterTest : public testing::Test {
    protected:
        void start(bool isAutomatic = true)
        {
            updater.emplace(
                UpdateMachine { runLoop, feed, signatures, installation, log,
                    { "https://updates.example.org/q/update.manifest", {} }, { 2, 36, 0 } },
                SelfUpdater::Surroundings { dialogs, panels, workspace, 0 }, delegate);
            updater->setAutomaticallyChecksForUpdates(isAutomatic);
            updater->setAutomaticallyDownloadsUpdates(isAutomatic);
            updater->startUpdater();
            runLoop.runPosted();
        }

        void answerManifest(const std::string& version = "1.1.0", int issued = 1'700'000'000)
        {
            feed.answer(Kind::Complete,
                FakeSignatureCheck::sign(
                    fmt::format(R"({{"version":"{}","file":"{}.tar.gz","size":30,"sha256":"{}",)"
                                R"("minimumSystem":"2.36.0","issued":{},"expires":1800000000}})",
                        version, version, std::string(64, 'a'), issued)));
        }

        /// From the check on, until the version is ready.
        void answerAll(const std::string& version = "1.1.0")
        {
            answerManifest(version);
            EXPECT_EQ(feed.asked, "https://updates.example.org/q/" + version + ".tar.gz");
            feed.answer(Kind::Complete);
            runLoop.advance(1s);
        }

        UpdateNotes notes() const { return UpdateNotes::parse(installation.written); }
        std::string lastLine() const { return log.lines().empty() ? "" : log.lines().back(); }

        FakeRunLoop runLoop;
        FakeUpdateFeed feed;
        FakeSignatureCheck signatures { runLoop };
        FakeInstallation installation { runLoop };
        FakeSystemLog log;
        FakeDialogs dialogs;
        FakeUpdateProgressPanels panels;
        FakeWorkspace workspace;
        Delegate delegate;
        std::optional<SelfUpdater> updater;
    };

    TEST_F(SelfUpdaterTest, FindsByItselfAndInstallsWhenTheDelegateSays)
    {
        start();
        runLoop.advance(SelfUpdater::firstCheck - 1s);
        EXPECT_EQ(feed.fetches, 0);
        runLoop.advance(1s);
        answerAll();
        EXPECT_EQ(delegate.announcements, 1);
        EXPECT_TRUE(dialogs.alerts.empty());
        EXPECT_EQ(installation.current.text(), "1.0.0");
        EXPECT_EQ(log.lines(),
            std::vector<std::string> { "Quillox: version 1.1.0 is ready to be installed." });

        // The next day's check finds nothing else, and fetches nothing twice.
        runLoop.advance(SelfUpdater::checkInterval);
        answerManifest();
        runLoop.advance(1s);
        EXPECT_EQ(delegate.announcements, 2);
        delegate.installNow();
        EXPECT_EQ(installation.current.text(), "1.1.0");
        EXPECT_EQ(workspace.relaunches, 1);
        EXPECT_EQ(notes().trial, (UpdateNotes::Trial { { 1, 1, 0 }, { 1, 0, 0 }, 0 }));
    }

    TEST_F(SelfUpdaterTest, AQuitInstallsOnlyWhatNobodyHasTakenChargeOf)
    {
        struct Row {
            bool takesCharge, isSwitchedOff, isInstalled;
        };
        for (const auto [takesCharge, isSwitchedOff, isInstalled] :
            { Row { true, false, false }, Row { false, false, true }, Row { true, true, true } }) {
            installation.current = { 1, 0, 0 };
            installation.written = {};
            delegate.takesCharge = takesCharge;
            start();
            runLoop.advance(SelfUpdater::firstCheck);
            answerAll();
            if (isSwitchedOff)
                updater->setAutomaticallyDownloadsUpdates(false);
            updater.reset();
            EXPECT_EQ(installation.current.text(), isInstalled ? "1.1.0" : "1.0.0");
            EXPECT_EQ(notes().trial.has_value(), isInstalled);
            EXPECT_EQ(workspace.relaunches, 0);
        }
    }

    TEST_F(SelfUpdaterTest, WhatWaitsIsAnnouncedAgainAfterAStart)
    {
        installation.versions.insert({ 1, 1, 0 });
        installation.written = UpdateNotes { .staged = Version { 1, 1, 0 } }.text();
        start();
        EXPECT_EQ(delegate.announcements, 1);
        updater.reset();
        installation.written
            = UpdateNotes { .staged = Version { 1, 1, 0 }, .rolledBack = { { 1, 1, 0 } } }.text();
        start();
        EXPECT_EQ(delegate.announcements, 1);
    }

    TEST_F(SelfUpdaterTest, RefusalsAreOneLineAndWaitForTheNextDay)
    {
        start();
        runLoop.advance(SelfUpdater::firstCheck);
        const std::pair<std::function<void()>, const char*> rows[] {
            { [&] { feed.answer(Kind::Refused); }, "it is so" },
            { [&] { feed.answer(Kind::Complete, "<html>"); }, "the feed holds no signed manifest" },
            { [&] {
                 auto text = FakeSignatureCheck::sign("{}");
                 text[20] = '0';
                 feed.answer(Kind::Complete, text);
             },
                "the manifest's signature is wrong" },
            { [&] { feed.answer(Kind::Complete, FakeSignatureCheck::sign("{}")); },
                "the manifest is malformed" },
            { [&] { answerManifest("0.9.0"); }, "0.9.0 is older than 1.0.0, which runs" },
            { [&] { answerManifest("1.1.0", 1'600'000'000); },
                "the manifest of 1.1.0 is older than one that was seen before" },
            { [&] {
                 signatures.hash = std::string(64, 'b');
                 answerAll();
             },
                "the archive of 1.1.0 is not what was signed" },
            { [&] {
                 signatures.hash = std::string(64, 'a');
                 installation.failure = "disk full";
                 answerAll();
             },
                "1.1.0 cannot be unpacked: disk full" },
        };
        std::size_t lines = 0;
        for (const auto& [answer, reason] : rows) {
            ASSERT_NE(feed.asked, "") << reason;
            answer();
            EXPECT_EQ(log.lines().size(), ++lines);
            EXPECT_EQ(lastLine(), fmt::format("Quillox: update refused: {}.", reason));
            const auto fetches = feed.fetches;
            runLoop.advance(SelfUpdater::checkInterval - 2s);
            EXPECT_EQ(feed.fetches, fetches);
            runLoop.advance(2s);
        }
        EXPECT_EQ(installation.written, UpdateNotes { .newestIssued = 1'700'000'000 }.text());
        EXPECT_EQ(delegate.announcements, 0);
        EXPECT_TRUE(dialogs.alerts.empty());
    }

    TEST_F(SelfUpdaterTest, TroubleOnTheWayIsTriedAgainAfterGrowingPauses)
    {
        start();
        runLoop.advance(SelfUpdater::firstCheck);
        RunLoop::Duration pause = SelfUpdater::firstPause;
        for (int attempt = 1; attempt <= 15; ++attempt) {
            EXPECT_EQ(feed.fetches, attempt);
            if (attempt % 2 == 0)
                answerManifest(); // And then the archive breaks off.
            feed.answer(Kind::Interrupted);
            runLoop.advance(pause - 1s);
            EXPECT_EQ(feed.fetches, attempt);
            runLoop.advance(1s);
            pause = std::min<RunLoop::Duration>(2 * pause, SelfUpdater::checkInterval);
        }
        EXPECT_EQ(pause, SelfUpdater::checkInterval);
        answerAll();
        EXPECT_EQ(delegate.announcements, 1);
        EXPECT_EQ(log.lines().front(), "Quillox: could not look for updates: it is so.");
    }

    TEST_F(SelfUpdaterTest, TheOperatorsCheckAlwaysHasAnAnswer)
    {
        start(false);
        runLoop.advance(48h);
        EXPECT_EQ(feed.fetches, 0);
        const auto check = [&](const std::function<void()>& answer, const char* message) {
            updater->checkForUpdates();
            updater->checkForUpdates();
            answer();
            ASSERT_FALSE(dialogs.alerts.empty());
            EXPECT_EQ(dialogs.alerts.back().message, message);
        };
        check([&] { answerManifest("1.0.0"); }, "Quillox is up to date");
        dialogs.press(0);
        check([&] { feed.answer(Kind::Interrupted); }, "The update did not succeed");
        dialogs.press(0);
        check([&] { answerManifest("0.9.0"); }, "The update did not succeed");
        EXPECT_EQ(dialogs.alerts.back().informativeText,
            "What the server offers was refused: 0.9.0 is older than 1.0.0, which runs.");
        dialogs.press(0);
        check([&] { answerManifest(); }, "A new version of Quillox is available");
        dialogs.press(1);
        EXPECT_EQ(feed.asked, ""); // Later is later.

        check([&] { answerManifest(); }, "A new version of Quillox is available");
        dialogs.press(0);
        EXPECT_EQ(panels.shown, 0.5);
        panels.cancel();
        EXPECT_EQ(panels.shown, -1);
        EXPECT_EQ(feed.asked, "");

        check([&] { answerManifest(); }, "A new version of Quillox is available");
        dialogs.press(0);
        feed.answer(Kind::Complete);
        runLoop.advance(1s);
        EXPECT_EQ(panels.shown, -1);
        EXPECT_EQ(installation.current.text(), "1.1.0");
        EXPECT_EQ(workspace.relaunches, 1);
        EXPECT_EQ(delegate.announcements, 0);
        EXPECT_EQ(dialogs.alerts.size(), 6U);
        runLoop.advance(48h);
        EXPECT_EQ(feed.fetches, 6);
    }

    TEST_F(SelfUpdaterTest, WhoAsksWhileItComesByItselfLooksOn)
    {
        start();
        runLoop.advance(SelfUpdater::firstCheck);
        answerManifest();
        for (const bool staysOn : { false, true }) {
            updater->checkForUpdates();
            EXPECT_EQ(panels.shown, 0.5);
            if (!staysOn)
                panels.cancel();
        }
        feed.answer(Kind::Complete);
        runLoop.advance(1s);
        EXPECT_EQ(panels.shown, -1);
        ASSERT_EQ(dialogs.alerts.size(), 1U);
        dialogs.press(1); // Later: then as if nobody had asked.
        runLoop.advance(1s);
        EXPECT_EQ(delegate.announcements, 1);
    }

    TEST_F(SelfUpdaterTest, SwitchedOffInTheMiddleItStops)
    {
        start();
        runLoop.advance(SelfUpdater::firstCheck);
        answerManifest();
        EXPECT_NE(feed.asked, "");
        updater->setAutomaticallyChecksForUpdates(false);
        updater->setAutomaticallyDownloadsUpdates(false);
        EXPECT_EQ(feed.asked, "");
        runLoop.advance(48h);
        EXPECT_EQ(feed.fetches, 1);
    }

    TEST_F(SelfUpdaterTest, AnInstallationThatFailsLeavesEverythingAsItWas)
    {
        start();
        runLoop.advance(SelfUpdater::firstCheck);
        answerAll();
        const auto before = notes();
        installation.failure = "read-only";
        delegate.installNow();
        EXPECT_EQ(notes(), before);
        EXPECT_EQ(workspace.relaunches, 0);
        EXPECT_EQ(lastLine(), "Quillox: version 1.1.0 could not be installed: read-only.");
    }

    TEST(LaunchHealthTest, AStartIsGoodWhenItComesToWhereItLeads)
    {
        struct Row {
            const char* what;
            bool sealsByItself, hasKeyboardLock, hasEngine;
            std::function<void(SetupMachine&, LaunchHealth&)> happens;
            bool isHealthy;
        };
        const Row rows[] {
            { "setup", false, true, true, [](auto&, auto&) {}, true },
            { "no page yet", true, true, true, [](auto&, auto&) {}, false },
            { "page", true, true, true, [](auto&, auto& health) { health.handleScreenShown(); },
                true },
            { "cannot lock", true, false, true, [](auto&, auto&) {}, false },
            { "no engine", false, true, false, [](auto&, auto&) {}, false },
        };
        for (const auto& row : rows) {
            for (const bool isCancelled : { false, true }) {
                SetupMachine machine;
                KioskSettings settings;
                settings.url = "https://museum.example/";
                machine.store(true, settings);
                machine.accessibility.isTrusted = machine.canCreateTap = row.hasKeyboardLock;
                machine.windows.hasEngine = row.hasEngine;
                int calls = 0;
                LaunchHealth health(machine.state(), machine.runLoop, [&] { ++calls; });
                if (row.sealsByItself)
                    machine.state().beginAutoStart(5);
                machine.runLoop.advance(3s);
                if (isCancelled)
                    machine.state().cancelAutoStart();
                machine.runLoop.advance(10s);
                row.happens(machine, health);
                const bool isGood = row.isHealthy || (isCancelled && row.hasEngine);
                EXPECT_EQ(calls, isGood ? 1 : 0) << row.what << isCancelled;
                machine.controller->stop();
                machine.runLoop.runPosted();
            }
        }
    }

    TEST_F(SelfUpdaterTest, OnlyTheVersionOnTrialPassesIt)
    {
        installation.versions = { { 0, 9, 0 }, { 1, 0, 0 }, { 1, 1, 0 } };
        installation.written = UpdateTrial::begun({}, { 1, 1, 0 }, { 1, 0, 0 }).text();
        const auto onTrial = installation.written;
        UpdateHealth(installation, log).handleScreenShown(); // Of the old version, on its way out.
        EXPECT_EQ(installation.written, onTrial);
        installation.running = { 1, 1, 0 };
        UpdateHealth(installation, log).handleScreenShown();
        EXPECT_EQ(notes().trial, std::nullopt);
        EXPECT_EQ(installation.versions, (std::set<Version> { { 1, 0, 0 }, { 1, 1, 0 } }));
    }

} // namespace

} // namespace quillox
