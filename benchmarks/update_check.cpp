// What checking an update of 30 MB costs, signature and hash, beside the system's own sha256sum;
// and how long it holds up the main loop meanwhile.

#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/update/SignatureCheckSodium.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <sodium.h>
#include <string>
#include <time.h>
#include <vector>

namespace quillox {

namespace {

    using Clock = std::chrono::steady_clock;
    using namespace std::chrono_literals;

    constexpr std::size_t archiveBytes = 30'000'000;
    constexpr int rounds = 15;
    constexpr double reach = 0.3; ///< Seconds.
    constexpr double frame = 0.016; ///< Likewise.

    double secondsSince(Clock::time_point begin)
    {
        return std::chrono::duration<double>(Clock::now() - begin).count();
    }

    /// Of all threads.
    double processorSeconds()
    {
        timespec time {};
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
    }

    double median(std::vector<double> values)
    {
        std::ranges::sort(values);
        return values[values.size() / 2];
    }

    /// A manifest of the usual size, and who signed it.
    struct Maker {
        std::string publicKey = std::string(crypto_sign_PUBLICKEYBYTES, '\0');
        std::string signature = std::string(crypto_sign_BYTES, '\0');
        std::string manifest = std::string(400, 'm');

        Maker()
        {
            std::string secretKey(crypto_sign_SECRETKEYBYTES, '\0');
            if (sodium_init() < 0)
                std::abort();
            crypto_sign_keypair(bytes(publicKey), bytes(secretKey));
            crypto_sign_detached(
                bytes(signature), nullptr, bytes(manifest), manifest.size(), bytes(secretKey));
        }

        static unsigned char* bytes(std::string& text)
        {
            return reinterpret_cast<unsigned char*>(text.data());
        }
    };

    struct Figures {
        std::vector<double> checks, works, holds, rivals;
    };

    void measureCheck(const std::string& archive, const Maker& maker, Figures& figures)
    {
        RunLoopGlib runLoop;
        SignatureCheckSodium check(maker.publicKey, runLoop);
        double longestHold = 0;
        auto lastTick = Clock::now();
        const auto ticks = runLoop.every(1ms, [&] {
            longestHold = std::max(longestHold, secondsSince(lastTick));
            lastTick = Clock::now();
        });
        std::optional<std::string> hash;
        const auto begin = Clock::now();
        const auto beginOfWork = processorSeconds();
        if (!check.isSigned(maker.manifest, maker.signature))
            std::abort();
        const auto work = check.hashFile(
            archive, [&](std::optional<std::string> answer) { hash = std::move(answer); });
        while (!hash)
            g_main_context_iteration(nullptr, TRUE);
        figures.checks.push_back(secondsSince(begin));
        figures.works.push_back(processorSeconds() - beginOfWork);
        figures.holds.push_back(longestHold);
    }

    void run(const std::filesystem::path& folder)
    {
        const auto archive = (folder / "archive").string();
        std::string contents(archiveBytes, '\0');
        std::minstd_rand random(3);
        std::ranges::generate(contents, [&] { return static_cast<char>(random()); });
        std::ofstream(archive, std::ios::binary) << contents;
        const auto rival = "sha256sum " + archive + " >/dev/null";
        const Maker maker;
        Figures figures;
        for (int round = 0; round < rounds; ++round) {
            measureCheck(archive, maker, figures);
            const auto begin = Clock::now();
            if (std::system(rival.c_str()) != 0)
                std::abort();
            figures.rivals.push_back(secondsSince(begin));
        }
        const auto check = median(figures.checks);
        const auto hold = std::ranges::max(figures.holds);
        fmt::print("{:<40}{:>8.1f} ms   reach < {:g}  {}\n", "signature and hash of 30 MB",
            check * 1e3, reach * 1e3, check < reach ? "met" : "MISSED");
        fmt::print("{:<40}{:>8.1f} ms\n", "  processor time", median(figures.works) * 1e3);
        fmt::print("{:<40}{:>8.2f}\n", "  / sha256sum", check / median(figures.rivals));
        fmt::print("{:<40}{:>8.1f} ms   reach < {:g}  {}\n", "longest hold of the main loop",
            hold * 1e3, frame * 1e3, hold < frame ? "met" : "MISSED");
    }

} // namespace

} // namespace quillox

int main()
{
    auto name = (std::filesystem::temp_directory_path() / "quillox-XXXXXX").string();
    if (!mkdtemp(name.data()))
        return 1;
    quillox::run(name);
    std::filesystem::remove_all(name);
    return 0;
}
