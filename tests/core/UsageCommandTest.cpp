#include "app/UsageCommand.h"

#include "fakes/FakeRunLoop.h"
#include "fakes/FakeUsage.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    class UsageCommandTest : public testing::Test {
    protected:
        UsageCommandTest()
        {
            runLoop.setClock(RunLoop::WallTime(1'740'830'400s)); // 2025-03-01 12:00 UTC
            store.recordSessionStart("a.example", "2025-03-01", 9);
            store.addActive(3725, "a.example", "2025-03-01");
            store.recordSessionStart(named, "2025-02-28", 23);
            store.setLastUsed(runLoop.now() - 2h);
        }

        int run(std::vector<std::string> arguments)
        {
            std::ostringstream out, err;
            arguments.insert(arguments.begin(), "usage");
            const auto line = CommandLine::parse(arguments);
            auto code = exitUsage;
            if (line.kind == CommandLine::Kind::usage)
                code = UsageCommand(
                    { store, damage, [this] { return diskFailure; }, runningProcess, out, err })
                           .run(line.usage);
            output = out.str();
            error = line.error.empty() ? err.str() : line.error + "\n";
            return code;
        }

        const std::string named = "=\"a\",\\\n\x1b";
        FakeRunLoop runLoop;
        FakeCalendar calendar;
        FakeUsageFile file;
        UsageDate dates { calendar, runLoop };
        UsageStore store { file, dates };
        std::string damage, diskFailure, output, error;
        int runningProcess = 0;
    };

    TEST_F(UsageCommandTest, ShowsWhatTheSheetShows)
    {
        EXPECT_EQ(run({}), exitSuccess);
        EXPECT_EQ(output,
            "USAGE\nAnonymous, on-device — how much the display gets used\n\n"
            "LAST 7 DAYS          2 SESSIONS · 1H 2M ENGAGED\n"
            "LAST 30 DAYS         2 SESSIONS · 1H 2M ENGAGED\n"
            "ALL TIME             2 SESSIONS · 1H 2M ENGAGED\n"
            "BUSIEST HOUR         09:00–10:00\n"
            "LAST USED            2H AGO\n"
            "\nBY WEBSITE\n"
            "\"=\\\"a\\\",\\\\\\n\\u001b\"  1 SESSIONS · 0M ENGAGED\n"
            "a.example            1 SESSIONS · 1H 2M ENGAGED\n");
        run({ "--days", "1" });
        EXPECT_NE(output.find("LAST 1 DAYS   1 SESSIONS"), std::string::npos) << output;
        EXPECT_EQ(output.find("ALL TIME"), std::string::npos);
        store.reset();
        run({});
        EXPECT_NE(
            output.find("\n\nNO DATA YET — SEAL A SITE TO START COUNTING\n"), std::string::npos);
    }

    TEST_F(UsageCommandTest, WritesWhatOtherProgramsRead)
    {
        run({ "--json", "--days", "1" });
        const auto document = nlohmann::json::parse(output);
        EXPECT_EQ(document["lastDays"], 1);
        EXPECT_EQ(
            document["total"], nlohmann::json::parse(R"({"sessions":1,"activeSeconds":3725})"));
        EXPECT_EQ(document["records"].size(), 1U);
        EXPECT_EQ(document["records"][0]["hours"][9], 1);
        EXPECT_EQ(document["busiestHour"], 9);
        EXPECT_EQ(document["lastUsed"], 1'740'823'200);
        run({ "--json" });
        EXPECT_EQ(nlohmann::json::parse(output)["sources"][0]["source"], named);

        run({ "--csv" });
        const std::string zeros9 = ",0,0,0,0,0,0,0,0,0", zeros14 = zeros9 + ",0,0,0,0,0";
        EXPECT_EQ(output.substr(output.find("\r\n") + 2),
            "2025-02-28,\"'=\"\"a\"\",\\\n\x1b\",1,0" + zeros9 + zeros14 + ",1\r\n"
                + "2025-03-01,a.example,1,3725" + zeros9 + ",1" + zeros14 + "\r\n");

        run({ "--prometheus" });
        EXPECT_EQ(output,
            "# HELP quillox_sessions_total Visitor sessions begun.\n"
            "# TYPE quillox_sessions_total counter\n"
            "quillox_sessions_total{source=\"=\\\"a\\\",\\\\\\n\x1b\"} 1\n"
            "quillox_sessions_total{source=\"a.example\"} 1\n"
            "# HELP quillox_active_seconds_total Time in which visitors used the display.\n"
            "# TYPE quillox_active_seconds_total counter\n"
            "quillox_active_seconds_total{source=\"=\\\"a\\\",\\\\\\n\x1b\"} 0\n"
            "quillox_active_seconds_total{source=\"a.example\"} 3725\n"
            "# HELP quillox_last_use_timestamp_seconds When a visitor last used the display.\n"
            "# TYPE quillox_last_use_timestamp_seconds gauge\n"
            "quillox_last_use_timestamp_seconds 1740823200.000\n");
    }

    TEST_F(UsageCommandTest, RefusesInOneLineAndWritesOnlyForAConfirmedReset)
    {
        struct Row {
            std::vector<std::string> arguments;
            int code;
            const char* named;
        };
        const Row rows[] { { { "--jsn" }, exitUsage, "[--json | --csv" },
            { { "--json", "--csv" }, exitUsage, "[--json | --csv" },
            { { "--days" }, exitUsage, "1 to 36500" }, { { "--days", "0" }, exitUsage, "1 to" },
            { { "--days", "7d" }, exitUsage, "1 to 36500" },
            { { "--days", "1", "--days", "2" }, exitUsage, "--days N" },
            { { "--prometheus", "--days", "7" }, exitUsage, "all time" },
            { { "reset", "--json" }, exitUsage, "reset --yes" },
            { { "reset" }, exitUsage, "reset --yes" }, { {}, exitFailure, "cannot read /u.json" },
            { { "reset", "--yes" }, exitFailure, "process 7 " } };
        damage = "/u.json";
        runningProcess = 7;
        for (const auto& row : rows) {
            EXPECT_EQ(run(row.arguments), row.code) << row.named;
            EXPECT_NE(error.find(row.named), std::string::npos) << error;
            EXPECT_EQ(error.find('\n'), error.size() - 1) << error;
            EXPECT_EQ(output, "");
        }
        EXPECT_EQ(file.writes, 0);
        runningProcess = 0;
        EXPECT_EQ(run({ "reset", "--yes" }), exitSuccess);
        EXPECT_EQ(file.contents, R"({"days":[]})");
        diskFailure = "/u.json: No space left";
        EXPECT_EQ(run({ "reset", "--yes" }), exitFailure);
        EXPECT_EQ(error, "quillox: cannot write /u.json: No space left\n");
        EXPECT_EQ(run({ "--help" }), exitSuccess);
    }

} // namespace

} // namespace quillox
