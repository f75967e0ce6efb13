#include "contract/SavedFiles.h"

#include "fakes/FakeSystemLog.h"
#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/CalendarPosix.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/system/UsageFilePosix.h"
#include "usage/UsageStore.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <future>
#include <memory>

namespace quillox {

namespace {

    namespace fs = std::filesystem;

    class UsageFileTest : public testing::Test {
    protected:
        std::string contents() const { return readFile(path).text.value_or("(none)"); }

        TemporaryFolder folder;
        std::string path = folder.path / "Quillox/usage.json";
        FakeSystemLog log;
        RunLoopGlib runLoop;
        CalendarPosix calendar;
        UsageDate dates { calendar, runLoop };
    };

    TEST_F(UsageFileTest, WhatCannotBeWrittenIsLoggedOnceAndTriedAgain)
    {
        put(folder.path / "Quillox", ""); // A file where the folder should be stops root, too.
        UsageFilePosix file(path, log);
        UsageStore store(file, dates);
        store.recordSessionStart("museum.example", "2025-03-01", 9);
        for (int attempt = 0; attempt < 2; ++attempt) {
            store.save();
            EXPECT_NE(file.flush(), "");
        }
        ASSERT_EQ(log.lines().size(), 1U);
        EXPECT_NE(log.lines()[0].find("Quillox: Not a directory"), std::string::npos);
        fs::remove(folder.path / "Quillox");
        store.save();
        EXPECT_EQ(file.flush(), "");
        const auto before = contents();

        // A disk on which nothing more fits.
        const auto previous = ::signal(SIGXFSZ, SIG_IGN);
        rlimit limit {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        const rlimit full { before.size() + 10, limit.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &full);
        store.recordSessionStart("library.example", "2025-03-01", 10);
        store.save();
        const auto reason = file.flush();
        EXPECT_EQ(contents(), before);
        EXPECT_TRUE(file.hasFailed());
        ::setrlimit(RLIMIT_FSIZE, &limit);
        ::signal(SIGXFSZ, previous);
        EXPECT_NE(reason.find("File too large"), std::string::npos) << reason;
        store.save();
        EXPECT_EQ(file.flush(), "");
        EXPECT_EQ(UsageStore(file, dates).total({}).sessions, 2);
        EXPECT_EQ(log.lines().size(), 2U);
    }

    TEST_F(UsageFileTest, DamageIsSetAsideBeforeItIsReplacedAndNamed)
    {
        const std::string truncated = R"({"days":[{"date":"2025-03-01","sour)";
        const std::function<void()> damages[] { [&] { put(path, truncated); },
            [&] { fs::create_directory(path); }, [&] { fs::create_symlink(path, path); } };
        for (const auto& damage : damages) {
            fs::remove_all(folder.path / "Quillox");
            fs::create_directory(folder.path / "Quillox");
            damage();
            UsageFilePosix file(path, log);
            UsageStore store(file, dates);
            EXPECT_TRUE(store.isEmpty() && file.isDamaged());
            store.save(); // Who only reads moves nothing.
            EXPECT_EQ(file.flush(), "");
            EXPECT_NE(fs::symlink_status(path).type(), fs::file_type::not_found);
            const auto lines = log.lines().size();
            store.recordSessionStart("museum.example", "2025-03-01", 9);
            store.save();
            EXPECT_EQ(file.flush(), "");
            EXPECT_EQ(UsageStore(file, dates).total({}).sessions, 1);
            ASSERT_EQ(log.lines().size(), lines + 1);
            const auto line = log.lines().back();
            const auto named = line.find(path + ".damaged-");
            ASSERT_NE(named, std::string::npos) << line;
            EXPECT_NE(fs::symlink_status(line.substr(named)).type(), fs::file_type::not_found);
        }
    }

    TEST_F(UsageFileTest, OfSeveralThatWaitOnlyTheLastIsWritten)
    {
        std::promise<void> begun, released;
        std::atomic<int> written = 0;
        UsageFilePosix file(path, log);
        file.write([&](std::ostream&) {
            begun.set_value();
            released.get_future().wait();
        });
        begun.get_future().wait();
        for (int number = 1; number <= 3; ++number)
            file.write([&written, number](std::ostream&) { written = written * 10 + number; });
        EXPECT_FALSE(file.hasFailed());
        released.set_value();
        EXPECT_EQ(file.flush(), "");
        EXPECT_EQ(written, 3);
    }

} // namespace

} // namespace quillox
