#include "config/KioskSettings.h"
#include "fakes/FakeDefaultsStore.h"
#include "fakes/FakeSystemLog.h"
#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/DefaultsStoreFile.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

namespace quillox {

namespace {

    namespace fs = std::filesystem;

    class TemporaryFolder {
    public:
        TemporaryFolder()
        {
            auto name = (fs::temp_directory_path() / "quillox-XXXXXX").string();
            path = ::mkdtemp(name.data());
        }
        ~TemporaryFolder() { fs::remove_all(path); }

        fs::path path;
    };

    void put(const fs::path& path, std::string_view text)
    {
        fs::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }

    class FileMachine {
    public:
        DefaultsStoreFile& store() { return m_store; }
        void provide(std::string_view key, std::string_view json)
        {
            put(m_folder.path / "etc.json",
                "{\"" + std::string(key) + "\":" + std::string(json) + "}");
        }

    private:
        TemporaryFolder m_folder;
        FakeSystemLog m_log;
        DefaultsStoreFile m_store {
            { m_folder.path / "a/b/user.json",
                { m_folder.path / "none.json", m_folder.path / "etc.json" } },
            m_log
        };
    };

    class FakeMachine {
    public:
        FakeDefaultsStore& store() { return m_store; }
        void provide(std::string_view key, std::string_view json) { m_store.provide(key, json); }

    private:
        FakeDefaultsStore m_store;
    };

    template <typename Machine> class DefaultsStoreContract : public testing::Test {
    protected:
        Machine m_machine;
    };
    using Machines = testing::Types<FakeMachine, FileMachine>;
    TYPED_TEST_SUITE(DefaultsStoreContract, Machines);

    TYPED_TEST(DefaultsStoreContract, ValuesComeBackAndProvidedOnesFillTheGaps)
    {
        DefaultsStore& store = this->m_machine.store();
        EXPECT_EQ(store.data("a"), std::nullopt);
        EXPECT_FALSE(store.boolean("a"));
        this->m_machine.provide("a", "true");
        EXPECT_TRUE(store.boolean("a"));
        store.setData("b", R"({"z":1,"a":"é"})");
        EXPECT_EQ(store.data("b"), R"({"z":1,"a":"é"})");
        EXPECT_EQ(store.data("a"), "true");
        store.setBoolean("a", false);
        EXPECT_EQ(store.data("a"), "false");
        store.setData("a", "not JSON");
        EXPECT_EQ(store.data("a"), "false");
        store.setData("a", "1");
        EXPECT_FALSE(store.boolean("a"));
    }

    class DefaultsStoreFileTest : public testing::Test {
    protected:
        TemporaryFolder m_folder;
        fs::path file = m_folder.path / "user.json";
        fs::path provided = m_folder.path / "etc.json";
        FakeSystemLog log;

        DefaultsPaths paths() const { return { file, { provided } }; }
        std::string contents() const { return readFile(file).text.value_or("(none)"); }

        std::vector<fs::path> filesNamed(std::string_view part) const
        {
            std::vector<fs::path> found;
            for (const auto& entry : fs::directory_iterator(m_folder.path)) {
                if (entry.path().filename().string().find(part) != std::string::npos)
                    found.push_back(entry.path());
            }
            return found;
        }
    };

    TEST_F(DefaultsStoreFileTest, ADamagedFileIsSetAsideOnceAndNamed)
    {
        put(provided, R"({"a":1})");
        for (const std::string damaged : { "{\"a\": tru", "", "[]", "{\"a\":\"\xff\"}" }) {
            put(file, damaged);
            const auto before = filesNamed(".damaged-").size();
            const auto lines = log.lines().size();
            DefaultsStoreFile store(paths(), log);
            EXPECT_EQ(store.data("a"), "1");
            EXPECT_EQ(store.data("a"), "1");
            EXPECT_FALSE(fs::exists(file));
            EXPECT_EQ(filesNamed(".damaged-").size(), before + 1);
            ASSERT_EQ(log.lines().size(), lines + 1);
            const auto line = log.lines().back();
            EXPECT_TRUE(line.starts_with("Quillox: ")) << line;
            EXPECT_NE(line.find(file.string() + ": it is not"), std::string::npos) << line;
            const auto named = line.find(file.string() + ".damaged-");
            ASSERT_NE(named, std::string::npos) << line;
            const auto aside = line.substr(named, line.find(": ", named) - named);
            EXPECT_EQ(readFile(aside).text, damaged);
        }
        put(file, "broken");
        DefaultsStoreFile store(paths(), log);
        store.setData("b", "2");
        EXPECT_TRUE(store.flush());
        EXPECT_EQ(contents(), "{\n  \"b\": 2\n}\n");
        EXPECT_EQ(filesNamed(".damaged-").size(), 5u);
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
        {
            DefaultsStoreFile store(paths(), log);
            store.setData("a", "5");
            store.setData("n", "6");
        }
        EXPECT_TRUE(fs::is_symlink(file));
        EXPECT_EQ(fs::status(real).permissions(), fs::perms(0640));
        EXPECT_EQ(compactJson(contents()), R"({"z":[1,{"y":null}],"a":5,"m":2,"n":6})");
        fs::remove(real);
        DefaultsStoreFile store(paths(), log);
        store.setData("a", "7");
        EXPECT_TRUE(store.flush());
        EXPECT_TRUE(fs::is_symlink(file));
        EXPECT_EQ(fs::status(real).permissions(), fs::perms(0600));
        EXPECT_TRUE(filesNamed(".new-").empty());
    }

    TEST_F(DefaultsStoreFileTest, TwoStoresThatWriteAtTheSameTimeLoseNoKey)
    {
        const auto write = [this](const std::string& prefix) {
            DefaultsStoreFile store(paths(), log);
            for (int i = 0; i < 40; ++i) {
                store.setData(prefix + std::to_string(i), std::to_string(i));
                EXPECT_TRUE(i % 2 == 0 || store.flush());
            }
        };
        std::thread other(write, "a");
        write("b");
        other.join();
        DefaultsStoreFile store(paths(), log);
        for (int i = 0; i < 40; ++i) {
            EXPECT_EQ(store.data("a" + std::to_string(i)), std::to_string(i));
            EXPECT_EQ(store.data("b" + std::to_string(i)), std::to_string(i));
        }
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
        EXPECT_EQ(store.data("b"), std::nullopt);
        EXPECT_TRUE(fs::is_directory(file));
        EXPECT_TRUE(filesNamed(".damaged-").empty());
        ASSERT_FALSE(log.lines().empty());
    }

    /// Saves two records in turns until it is killed, one byte to the pipe for each.
    [[noreturn]] void saveForever(
        const DefaultsPaths& paths, const KioskSettings (&records)[2], int pipe)
    {
        FakeSystemLog log;
        DefaultsStoreFile store(paths, log);
        for (unsigned i = 0;; ++i) {
            records[i % 2].save(store);
            if (!store.flush() || ::write(pipe, "x", 1) != 1)
                ::_exit(1);
        }
    }

    TEST_F(DefaultsStoreFileTest, AKillAtAnyMomentLeavesTheOldOrTheNewRecordWhole)
    {
        const KioskSettings records[2] { { .exitPassword = std::string(1'500, 'a') },
            { .allowedDomains = { "b" }, .exitPassword = std::string(2'500, 'b') } };
        // On a disk and not in memory: there a torn write lasts too short to be hit.
        std::minstd_rand random(20);
        unsigned saves = 0;
        unsigned kills = 0;
        for (; saves < 1000; ++kills) {
            int ends[2];
            ASSERT_EQ(::pipe(ends), 0);
            const auto child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0)
                saveForever(paths(), records, ends[1]);
            ::close(ends[1]);
            char bytes[64];
            for (unsigned left = 1 + random() % 30; left > 0; --left, ++saves) {
                pollfd readable { ends[0], POLLIN, 0 };
                ASSERT_EQ(::poll(&readable, 1, 10'000), 1);
                ASSERT_EQ(::read(ends[0], bytes, 1), 1);
            }
            // Anywhere in the next save, which takes about as long.
            const auto moment
                = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 3000);
            while (std::chrono::steady_clock::now() < moment)
                std::this_thread::yield();
            ::kill(child, SIGKILL);
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            ASSERT_TRUE(WIFSIGNALED(status));
            for (ssize_t more; (more = ::read(ends[0], bytes, sizeof bytes)) > 0;)
                saves += static_cast<unsigned>(more);
            ::close(ends[0]);
            const auto loaded = KioskSettings::load(DefaultsStoreFile(paths(), log));
            ASSERT_TRUE(loaded == records[0] || loaded == records[1]) << "kill " << kills;
            ASSERT_TRUE(log.lines().empty()) << log.lines()[0];
        }
        EXPECT_GT(kills, 30u);
        EXPECT_LE(filesNamed(".new-").size(), 1u);
    }

} // namespace

} // namespace quillox
