#pragma once

#include <gtest/gtest.h>

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string_view>
#include <thread>
#include <vector>

namespace quillox {

class TemporaryFolder {
public:
    TemporaryFolder()
    {
        auto name = (std::filesystem::temp_directory_path() / "quillox-XXXXXX").string();
        path = ::mkdtemp(name.data());
    }
    ~TemporaryFolder() { std::filesystem::remove_all(path); }

    std::vector<std::filesystem::path> filesNamed(std::string_view part) const
    {
        std::vector<std::filesystem::path> found;
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
            if (entry.path().filename().string().find(part) != std::string::npos)
                found.push_back(entry.path());
        }
        return found;
    }

    std::filesystem::path path;
};

inline void put(const std::filesystem::path& path, std::string_view text)
{
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

/// Has child processes save until each is killed at a random moment, for a thousand saves in all;
/// after each kill, `check` looks at what is there. `save`, given to each child by `begin`, saves
/// the first or second of two contents in turns and tells whether that worked.
inline void killWhileSaving(
    const std::function<std::function<bool(unsigned)>()>& begin, const std::function<bool()>& check)
{
    // On a disk and not in memory: there a torn write lasts too short to be hit.
    std::minstd_rand random(20);
    unsigned saves = 0;
    unsigned kills = 0;
    for (; saves < 1000; ++kills) {
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const auto child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            const auto save = begin();
            for (unsigned turn = 0; save(turn % 2) && ::write(ends[1], "x", 1) == 1;)
                ++turn;
            ::_exit(1);
        }
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
        ASSERT_TRUE(check()) << "kill " << kills;
    }
    EXPECT_GT(kills, 30u);
}

} // namespace quillox
