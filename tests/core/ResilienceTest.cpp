#include "core/SetupMachine.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using enum AgentService::Status;

    struct ResilienceTest : testing::Test, SetupMachine { };

    TEST_F(ResilienceTest, AgentFollowsTheLastWishAndSaysOnceWhyItCannot)
    {
        EXPECT_EQ(agents.name, "com.orvendal.quillox.watchdog.plist");
        const struct {
            AgentService::Status status;
            std::string wishes; ///< "." is the time for an answer.
            const char* calls;
            AgentService::Status left;
        } rows[] {
            { NotRegistered, "+.+.", "+", Enabled },
            { NotRegistered, "-.", "", NotRegistered },
            { RequiresApproval, "-.", "", RequiresApproval },
            { RequiresApproval, "+.", "+", Enabled },
            { NotFound, "+.-.", "+-", NotRegistered },
            { Enabled, "+.", "", Enabled },
            { Enabled, "-.", "-", NotRegistered },
            { NotRegistered, "+-+", "+", Enabled },
            { NotRegistered, "+-", "+-", NotRegistered },
            { Enabled, "-+-+-", "-", NotRegistered },
            { Enabled, "+-", "-", NotRegistered },
        };
        for (const auto* failure : { "", "no bus" }) {
            agents.failure = *failure ? std::optional<std::string>(failure) : std::nullopt;
            for (const auto& row : rows) {
                agents.status = row.status;
                agents.calls.clear();
                const auto before = log.lines().size();
                for (const char wish : row.wishes)
                    wish == '.' ? runLoop.advance(1s) : watchdog.setEnabled(wish == '+');
                std::vector<bool> answers;
                watchdog.readEnabled([&](bool isEnabled) { answers.push_back(isEnabled); });
                runLoop.advance(1s);
                EXPECT_EQ(answers, std::vector { agents.status == Enabled }) << row.wishes;
                const auto told = log.lines().size() - before;
                if (agents.failure) {
                    EXPECT_EQ(agents.status, row.status);
                    EXPECT_EQ(told, agents.calls.size()) << row.wishes;
                } else {
                    EXPECT_EQ(agents.calls, row.calls) << row.wishes;
                    EXPECT_EQ(agents.status, row.left) << row.wishes;
                    EXPECT_EQ(told, 0U);
                }
            }
        }
        EXPECT_EQ(log.lines().front(), "Quillox: watchdog update failed: no bus");
        EXPECT_EQ(runLoop.activeTimers(), 0U);
    }

    TEST_F(ResilienceTest, UpdaterIsMadeOnceAndFollowsTheSetting)
    {
        using Lines = std::vector<std::string>;
        updates.apply(true);
        updates.checkForUpdates();
        EXPECT_EQ(journal.take(), Lines {});
        updates.configure(false);
        EXPECT_EQ(
            journal.take(), (Lines { "make updater", "checks-", "downloads-", "start updater" }));
        EXPECT_EQ(runLoop.activeTimers(), 1U);
        updates.apply(true);
        updates.checkForUpdates();
        EXPECT_EQ(journal.take(), (Lines { "checks+", "downloads+", "check now" }));
        EXPECT_EQ(runLoop.activeTimers(), 1U);
        EXPECT_TRUE(updaters.delegate->supportsGentleScheduledUpdateReminders());
        EXPECT_FALSE(updaters.delegate->shouldHandleShowingScheduledUpdate());
    }

    TEST_F(ResilienceTest, UpdateWaitsForTheSmallHours)
    {
        const struct {
            RunLoop::Duration configured, switchedOn, installed; ///< From midnight on.
        } rows[] {
            { 14h, 14h, 27h },
            { 14h, 14h + 7min, 27h }, // The setting does not move the ticks.
            { 14h + 7min, 15h, 27h + 7min },
            { 2h + 44min, 2h + 50min, 3h + 14min },
            { 2h + 45min, 2h + 50min, 3h },
            { 4h + 44min, 4h + 50min, 4h + 59min },
            { 4h + 45min, 4h + 50min, 27h },
        };
        for (const auto& row : rows) {
            const RunLoop::WallTime midnight(1'740'787'200s);
            runLoop.setClock(midnight + row.configured);
            updates.configure(false);
            runLoop.advance(row.switchedOn - row.configured);
            updates.apply(true);
            std::optional<RunLoop::Duration> installed;
            EXPECT_TRUE(updaters.delegate->willInstallUpdateOnQuit(
                [&] { installed = runLoop.now() - midnight; }));
            runLoop.advance(48h);
            EXPECT_EQ(installed, row.installed);
        }
    }

    TEST_F(ResilienceTest, OnlyTheNewestUpdateWaitsAndNoneThatWasSwitchedOff)
    {
        std::string installed;
        const auto announce = [&](const char* version) {
            updaters.delegate->willInstallUpdateOnQuit(
                [&installed, version] { installed += version; });
        };
        updates.configure(true);
        announce("1");
        updates.apply(false);
        updates.apply(true);
        runLoop.advance(48h);
        EXPECT_EQ(installed, "");
        announce("2");
        announce("3");
        updates.apply(true);
        runLoop.advance(48h);
        EXPECT_EQ(installed, "3");
        // One that is announced while another is installed waits for its own turn.
        updaters.delegate->willInstallUpdateOnQuit([&] { announce("4"); });
        runLoop.advance(48h);
        EXPECT_EQ(installed, "34");
    }

} // namespace

} // namespace quillox
