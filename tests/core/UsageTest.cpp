#include "fakes/FakeRunLoop.h"
#include "fakes/FakeUsage.h"
#include "usage/UsageStatsView.h"
#include "usage/UsageTracker.h"

#include <gtest/gtest.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Source = UsageStore::SourceSummary;

    class UsageTest : public testing::Test {
    protected:
        UsageTest() { runLoop.setClock(RunLoop::WallTime(1'740'830'400s)); } // 2025-03-01 12:00 UTC

        void touch() { tracker->recordActivity(runLoop.now()); }
        void touchAfter(RunLoop::Duration pause)
        {
            runLoop.advance(pause);
            touch();
        }
        UsageStore& store() { return tracker->store(); }
        void reopen() { tracker = std::make_unique<UsageTracker>(runLoop, file, calendar); }

        FakeRunLoop runLoop;
        FakeCalendar calendar;
        FakeUsageFile file;
        std::unique_ptr<UsageTracker> tracker
            = std::make_unique<UsageTracker>(runLoop, file, calendar);
    };

    TEST_F(UsageTest, TurnsInputIntoSessionsAndEngagedTime)
    {
        touch(); // Not yet.
        tracker->begin("museum.example", 60s);
        for (const auto pause : { 0ms, 3000ms, 1500ms })
            touchAfter(pause);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 1, 4 }));
        touchAfter(60s);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 1, 64 }));
        touchAfter(60001ms);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 2, 64 }));
        tracker->end();
        touch();
        EXPECT_EQ(store().total({}).sessions, 2);

        tracker->begin("museum.example", 2s); // No gap is shorter than five seconds.
        touch();
        touchAfter(5s);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 3, 69 }));
        touchAfter(5001ms);
        EXPECT_EQ(store().peakHour(), 12);
        EXPECT_EQ(store().total({}).sessions, 4);
    }

    TEST_F(UsageTest, CountsNoTimeThatAClockMadeUp)
    {
        tracker->begin("museum.example", 60s);
        touch();
        const auto set = [this](RunLoop::Duration by) { runLoop.setClock(runLoop.now() + by); };
        set(-5h);
        touchAfter(10s);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 1, 10 }));
        set(30s);
        touchAfter(10s);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 1, 20 }));
        set(13h); // Or the machine slept.
        touchAfter(10s);
        EXPECT_EQ(store().total({}), (UsageStore::Summary { 2, 20 }));

        runLoop.setClock(RunLoop::WallTime(1'740'873'590s)); // 23:59:50.
        touch();
        touchAfter(20s);
        EXPECT_EQ(store().perSource(1), (std::vector<Source> { { "museum.example", { 0, 20 } } }));
    }

    TEST_F(UsageTest, SumsUpByDayAndSite)
    {
        const auto today = store().dates().daysAgo(0);
        store().recordSessionStart("b", today, 14);
        store().recordSessionStart("a", store().dates().daysAgo(6), 9);
        store().recordSessionStart("b", today, 24);
        store().addActive(61, "a", store().dates().daysAgo(7));
        store().addActive(0, "c", today);
        store().addActive(-1, "c", today);
        EXPECT_EQ(
            store().perSource(7), (std::vector<Source> { { "b", { 2, 0 } }, { "a", { 1, 0 } } }));
        EXPECT_EQ(
            store().perSource({}), (std::vector<Source> { { "b", { 2, 0 } }, { "a", { 1, 61 } } }));
        EXPECT_EQ(store().perSource(1), (std::vector<Source> { { "b", { 2, 0 } } }));
        EXPECT_EQ(store().peakHour(), 9); // The earlier one of equals.
        store().reset();
        EXPECT_TRUE(store().isEmpty() && !store().peakHour() && !store().lastUsed());
        EXPECT_EQ(file.contents, R"({"days":[]})");
    }

    TEST_F(UsageTest, SavesWhatHasChangedAndTriesAgain)
    {
        tracker->begin("museum.example", 60s);
        runLoop.advance(1min);
        EXPECT_EQ(file.writes, 0);
        touch();
        runLoop.advance(1min);
        EXPECT_EQ(file.writes, 1);
        file.isBroken = true;
        touch();
        runLoop.advance(40s);
        EXPECT_EQ(file.writes, 3);
        file.isBroken = false;
        touchAfter(1s);
        tracker->end();
        const auto total = store().total({});
        const auto used = store().lastUsed();
        reopen();
        EXPECT_EQ(store().total({}), total);
        EXPECT_EQ(store().lastUsed(), used);
    }

    TEST_F(UsageTest, ReadsForgivinglyAndSetsDamageAside)
    {
        const std::string head = R"({"days":[{"date":"2025-03-01","source":"a")";
        struct Row {
            std::string text;
            UsageStore::Summary total;
            bool isDamaged;
        };
        for (const auto& row : std::vector<Row> {
                 { R"({"days":[]})", {}, false },
                 { head + R"(,"sessions":2,"activeSeconds":9}],"lastUsed":762523200.5})", { 2, 9 },
                     false },
                 { head + R"(,"sessions":2,"hours":[1,2],"x":{"sessions":7}}]})", { 2, 0 }, false },
                 { head + R"(,"sessions":-2,"activeSeconds":9e18,"hours":7}]})", {}, false },
                 { R"({"days":[{"source":"a","sessions":3},7,{"date":"2025-03-01"}]})", {}, false },
                 { head, {}, true },
                 { "[]", {}, true },
                 { "", {}, true },
                 { R"({"lastUsed":1})", {}, true },
             }) {
            SCOPED_TRACE(row.text);
            file = {};
            file.contents = row.text;
            reopen();
            EXPECT_EQ(store().total({}), row.total);
            EXPECT_EQ(file.wasSetAside, row.isDamaged);
        }
        file.contents = head + R"(,"hours":[0,0,5]}],"lastUsed":-3600})";
        reopen();
        EXPECT_EQ(store().peakHour(), 2);
        EXPECT_EQ(store().lastUsed(), RunLoop::WallTime(978'303'600s));
    }

    TEST_F(UsageTest, TellsTheOperatorInAFewLines)
    {
        UsageStatsView view(store());
        EXPECT_TRUE(view.body().isEmpty);
        for (int site = 0; site < 11; ++site) {
            store().recordSessionStart("site" + std::to_string(site), "2025-03-01", 23);
            EXPECT_EQ(view.body().websites.back().title.ends_with(" MORE"), site >= 8) << site;
        }
        store().addActive(3725, "site0", "2025-01-30");
        EXPECT_EQ(view.body().statistics,
            (std::vector<UsageStatsView::Row> { { "LAST 7 DAYS", "11 SESSIONS · 0M ENGAGED" },
                { "LAST 30 DAYS", "11 SESSIONS · 0M ENGAGED" },
                { "ALL TIME", "11 SESSIONS · 1H 2M ENGAGED" } }));
        EXPECT_EQ(view.body().lines,
            (std::vector<UsageStatsView::Row> {
                { "BUSIEST HOUR", "23:00–00:00" }, { "LAST USED", "—" } }));
        EXPECT_EQ(view.body().websites.size(), 9U);
        EXPECT_EQ(view.body().websites.back().title, "+3 MORE");
        EXPECT_EQ(UsageStatsView::duration(59), "0M ENGAGED");
        EXPECT_EQ(UsageStatsView::duration(3600), "1H 0M ENGAGED");

        store().setLastUsed(runLoop.now());
        for (const auto& [passed, text] : std::vector<std::pair<RunLoop::Duration, const char*>> {
                 { 59s, "JUST NOW" }, { 2s, "1M AGO" }, { 1h, "1H AGO" }, { 24h, "1D AGO" },
                 { 24h * 28, "29D AGO" }, { 24h, "2025-03-01" } }) {
            runLoop.advance(passed);
            EXPECT_EQ(view.lastUsedText(), text);
        }
        view.resetStats();
        EXPECT_TRUE(view.body().isEmpty && view.version() == 1);
    }

} // namespace

} // namespace quillox
