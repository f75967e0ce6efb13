#include "platform/linux/system/CalendarPosix.h"

#include "fakes/FakeRunLoop.h"
#include "fakes/FakeUpdaters.h"
#include "resilience/UpdateController.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace quillox {

namespace {

    using namespace std::chrono;
    using namespace std::chrono_literals;

    class CalendarPosixTest : public testing::Test {
    protected:
        ~CalendarPosixTest() override { ::unsetenv("TZ"); }

        static RunLoop::WallTime utc(year_month_day day, seconds time)
        {
            return RunLoop::WallTime(sys_days(day).time_since_epoch() + time);
        }

        const CalendarPosix calendar;
    };

    TEST_F(CalendarPosixTest, NamesHoursAndDaysWhereverClocksAreSet)
    {
        struct Row {
            const char* zone;
            RunLoop::WallTime time;
            const char* day;
            int hour;
            const char* dayBefore;
        };
        const auto berlin = "Europe/Berlin", lordHowe = "Australia/Lord_Howe";
        const auto spring = 2025y / 3 / 30, autumn = 2025y / 10 / 26;
        const Row rows[] {
            { berlin, utc(spring, 1h - 1s), "2025-03-30", 1, "2025-03-29" },
            { berlin, utc(spring, 1h), "2025-03-30", 3, "2025-03-29" },
            { berlin, utc(spring, 22h + 30min), "2025-03-31", 0, "2025-03-30" },
            { berlin, utc(autumn, 1h - 1s), "2025-10-26", 2, "2025-10-25" },
            { berlin, utc(autumn, 1h), "2025-10-26", 2, "2025-10-25" },
            { berlin, utc(autumn, 2h), "2025-10-26", 3, "2025-10-25" },
            { berlin, utc(autumn, 22h + 30min), "2025-10-26", 23, "2025-10-25" },
            { berlin, utc(2024y / 12 / 31, 23h - 1s), "2024-12-31", 23, "2024-12-30" },
            { berlin, utc(2024y / 12 / 31, 23h), "2025-01-01", 0, "2024-12-31" },
            { lordHowe, utc(2025y / 4 / 5, 15h - 1s), "2025-04-06", 1, "2025-04-05" },
            { lordHowe, utc(2025y / 4 / 5, 15h), "2025-04-06", 1, "2025-04-05" },
            { lordHowe, utc(2025y / 4 / 5, 15h + 30min), "2025-04-06", 2, "2025-04-05" },
            { lordHowe, utc(2025y / 10 / 4, 15h + 30min - 1s), "2025-10-05", 1, "2025-10-04" },
            { lordHowe, utc(2025y / 10 / 4, 15h + 30min), "2025-10-05", 2, "2025-10-04" },
            { "Asia/Kathmandu", utc(2024y / 2 / 29, 18h + 15min), "2024-03-01", 0, "2024-02-29" },
            { "UTC", utc(1969y / 12 / 31, 23h), "1969-12-31", 23, "1969-12-30" },
        };
        for (const auto& row : rows) { // The zone changes from one to the next.
            ::setenv("TZ", row.zone, 1);
            const auto hour = calendar.hourOf(row.time);
            EXPECT_EQ(hour.day, row.day) << row.zone;
            EXPECT_EQ(hour.hour, row.hour) << row.zone << " " << row.day;
            EXPECT_EQ(calendar.dayBefore(row.time, 0), row.day);
            EXPECT_EQ(calendar.dayBefore(row.time, 1), row.dayBefore);
        }
    }

    TEST_F(CalendarPosixTest, AStretchLiesInTheHourThatItTells)
    {
        for (const auto* zone : { "Europe/Berlin", "Australia/Lord_Howe", "Asia/Kathmandu" }) {
            ::setenv("TZ", zone, 1);
            for (const auto night :
                { 2025y / 3 / 30, 2025y / 10 / 26, 2025y / 4 / 5, 2025y / 10 / 4 })
                for (auto time = utc(night, 0s); time < utc(night, 24h); time += 7min) {
                    const auto hour = calendar.hourOf(time);
                    EXPECT_TRUE(hour.begin <= time && time < hour.end);
                    for (const auto other : { hour.begin, hour.end - 1ns }) {
                        const auto there = calendar.hourOf(other);
                        EXPECT_TRUE(there.day == hour.day && there.hour == hour.hour) << zone;
                    }
                }
        }
    }

    TEST_F(CalendarPosixTest, AnUpdateWaitsForThreeOClockAlsoWhenClocksAreSet)
    {
        const auto spring = 2025y / 3 / 30, autumn = 2025y / 10 / 26;
        const struct {
            const char* zone;
            RunLoop::WallTime evening, installed;
        } rows[] {
            { "Europe/Berlin", utc(2025y / 3 / 29, 20h), utc(spring, 1h) },
            { "Europe/Berlin", utc(2025y / 10 / 25, 20h), utc(autumn, 2h) },
            { "Pacific/Chatham", utc(2025y / 9 / 27, 8h), utc(2025y / 9 / 27, 14h) },
            { "Pacific/Chatham", utc(2025y / 4 / 5, 8h), utc(2025y / 4 / 5, 13h + 15min) },
        };
        for (const auto& row : rows) {
            ::setenv("TZ", row.zone, 1);
            Journal journal;
            FakeRunLoop runLoop;
            FakeUpdaters updaters(journal);
            UpdateController updates(runLoop, calendar, updaters);
            runLoop.setClock(row.evening);
            updates.configure(true);
            RunLoop::WallTime installed;
            updaters.delegate->willInstallUpdateOnQuit([&] { installed = runLoop.now(); });
            runLoop.advance(24h);
            EXPECT_EQ((installed - row.installed).count(), 0) << row.zone;
        }
    }

} // namespace

} // namespace quillox
