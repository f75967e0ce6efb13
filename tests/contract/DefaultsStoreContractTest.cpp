#include "contract/SavedFiles.h"

#include "config/KioskSettings.h"
#include "fakes/FakeSystemLog.h"
#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/DefaultsStoreFile.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <random>
#include <thread>

namespace quillox {

namespace {

    namespace fs = std::filesystem;
    using std::chrono::microseconds, std::chrono::steady_clock;

    class DefaultsStoreFileTest : public testing::Test {
    protected:
        TemporaryFolder m_folder;
        fs::path file = m_folder.path / "user.json";
        fs::path provided = m_folder.path / "etc.json";
        FakeSystemLog log;

        DefaultsPaths paths() const { return { file, { provided } }; }
        std::string contents() const { return readFile(file).text.value_or("(none)"); }

        auto filesNamed(std::string_view part) const { return m_folder.filesNamed(part); }
    };

    TEST_F(DefaultsStoreFileTest, ValuesComeBackAndProvidedOnesFillTheGaps)
    {
        put(provided, R"({"a":true})");
        DefaultsStoreFile store({ file, { m_folder.path / "none.json", provided } }, log);
        EXPECT_TRUE(store.boolean("a"));
        EXPECT_EQ(store.data("b"), std::nullopt);
        EXPECT_FALSE(store.boolean("b"));
        store.setData("b", R"({"z":1,"a":"é"})");
        EXPECT_EQ(store.data("b"), R"({"z":1,"a":"é"})");
        EXPECT_EQ(store.data("a"), "true");
        store.setBoolean("a", false);
        store.setData("a", "not JSON");
        EXPECT_EQ(store.data("a"), "false");
        store.setData("a", "1");
        EXPECT_FALSE(store.boolean("a"));
    }

    TEST_F(DefaultsStoreFileTest, ADamagedFileIsSetAsideOnceAndNamed)
    {
        put(provided, R"({"a":1})");
        std::size_t count = 0;
        for (const std::string damaged : { "{\"a\": tru", "", "[]", "{\"a\":\"\xff\"}" }) {
            put(file, damaged);
            DefaultsStoreFile store(paths(), log);
            EXPECT_EQ(store.data("a"), "1");
            EXPECT_EQ(store.data("a"), "1");
            EXPECT_FALSE(fs::exists(file));
            ASSERT_EQ(log.lines().size(), ++count);
            EXPECT_EQ(filesNamed(".damaged-").size(), count);
            const auto line = log.lines().back();
            EXPECT_NE(line.find(file.string() + ": it is not"), std::string::npos) << line;
            const auto named = line.find(file.string() + ".damaged-");
            ASSERT_NE(named, std::string::npos) << line;
            EXPECT_EQ(readFile(line.substr(named, line.find(": ", named) - named)).text, damaged);
            store.setData("b", "2");
            EXPECT_TRUE(store.flush());
            EXPECT_EQ(contents(), "{\n  \"b\": 2\n}\n");
        }
        DefaultsStoreFile store(paths(), log);
        put(provided, std::string(1'000'000, '['));
        EXPECT_EQ(store.data("a"), std::nullopt);
        EXPECT_TRUE(fs::exists(provided));
        EXPECT_NE(log.lines().back().find(provided.string()), std::string::npos);
    }

    TEST_F(DefaultsStoreFileTest, LinksModesAndOtherKeysStay)
    {
        const auto real = m_folder.path / "elsewhere/real.json";
        put(real, R"({"z":[1,{"y":null}],"a":1,"m":2})");
        fs::permissions(real, fs::perms(0640));
        fs::create_symlink("elsewhere/real.json", file);
        for (const int mode : { 0640, 0600 }) {
            DefaultsStoreFile store(paths(), log);
            store.setData("a", "5");
            store.setData("n", "6");
            EXPECT_TRUE(store.flush());
            EXPECT_TRUE(fs::is_symlink(file));
            EXPECT_EQ(fs::status(real).permissions(), fs::perms(mode));
            if (mode == 0640) {
                EXPECT_EQ(compactJson(contents()), R"({"z":[1,{"y":null}],"a":5,"m":2,"n":6})");
            }
            fs::remove(real);
        }
        EXPECT_TRUE(filesNamed(".new-").empty());
    }

    TEST_F(DefaultsStoreFileTest, TwoStoresThatWriteAtTheSameTimeLoseNoKey)
    {
        const auto write = [this](const std::string& prefix) {
            DefaultsStoreFile store(paths(), log);
            for (int i = 0; i < 40; ++i) {
                store.setData(prefix + std::to_string(i), "1");
                EXPECT_TRUE(i % 2 == 0 || store.flush());
            }
        };
        std::thread other(write, "a");
        write("b");
        other.join();
        const DefaultsStoreFile store(paths(), log);
        for (int i = 0; i < 40; ++i)
            EXPECT_TRUE(store.data("a" + std::to_string(i)) && store.data("b" + std::to_string(i)));
        EXPECT_TRUE(log.lines().empty());
    }

    TEST_F(DefaultsStoreFileTest, WhatCannotBeWrittenIsLoggedOnceAndKeptForTheProcess)
    {
        // A file where the folder should be stops root, too.
        const auto obstacle = m_folder.path / "folder";
        put(obstacle, "");
        DefaultsStoreFile store({ obstacle / "user.json", {} }, log);
        std::string reason;
        for (const auto* json : { "1", "2" }) {
            store.setData("a", json);
            EXPECT_FALSE(store.flush(&reason));
            EXPECT_EQ(store.data("a"), json);
        }
        EXPECT_NE(reason.find("folder: Not a directory"), std::string::npos) << reason;
        ASSERT_EQ(log.lines().size(), 1u);
        EXPECT_NE(log.lines()[0].find(reason), std::string::npos);
        fs::remove(obstacle);
        EXPECT_TRUE(store.flush(&reason)) << reason;
        EXPECT_EQ(DefaultsStoreFile({ obstacle / "user.json", {} }, log).data("a"), "2");
    }

    TEST_F(DefaultsStoreFileTest, AFileThatCannotBeReadIsNeitherMovedNorOverwritten)
    {
        fs::create_directory(file);
        DefaultsStoreFile store(paths(), log);
        store.setData("a", "1");
        EXPECT_FALSE(store.flush());
        EXPECT_TRUE(fs::is_directory(file) && filesNamed(".damaged-").empty());
        EXPECT_FALSE(log.lines().empty());
    }

    /// Children save two records in turns, a thousand times in all, and each is killed somewhere.
    TEST_F(DefaultsStoreFileTest, AKillAtAnyMomentLeavesTheOldOrTheNewRecordWhole)
    {
        const KioskSettings records[2] { { .exitPassword = std::string(1'500, 'a') },
            { .allowedDomains = { "b" }, .exitPassword = std::string(12'000, 'b') } };
        std::minstd_rand random(20);
        for (unsigned kills = 0, saves = 0; saves < 1000 || kills < 30; ++kills) {
            int ends[2];
            ASSERT_EQ(::pipe(ends), 0);
            const auto child = ::fork();
            if (child == 0) {
                DefaultsStoreFile store(paths(), log);
                for (unsigned turn = 0; turn == 0 || ::write(ends[1], "x", 1) == 1; ++turn) {
                    records[turn % 2].save(store);
                    if (!store.flush())
                        ::_exit(1);
                }
            }
            ::close(ends[1]);
            char bytes[64];
            for (unsigned left = 1 + random() % 30; left > 0; --left, ++saves) {
                pollfd readable { ends[0], POLLIN, 0 };
                ASSERT_EQ(::poll(&readable, 1, 10'000), 1);
                ASSERT_EQ(::read(ends[0], bytes, 1), 1);
            }
            // Anywhere in the next save, which takes about as long.
            const auto moment = steady_clock::now() + microseconds(random() % 3000);
            while (steady_clock::now() < moment)
                std::this_thread::yield();
            ::kill(child, SIGKILL);
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFSIGNALED(status));
            ::close(ends[0]);
            const auto loaded = KioskSettings::load(DefaultsStoreFile(paths(), log));
            ASSERT_TRUE(loaded == records[0] || loaded == records[1]) << "kill " << kills;
            ASSERT_TRUE(log.lines().empty());
        }
        EXPECT_LE(filesNamed(".new-").size(), 1u);
    }

} // namespace

} // namespace quillox
