// What loading and saving the statistics cost, in the real file, beside reading and writing the
// same text with the JSON library's tree.

#include "platform/linux/system/CalendarPosix.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/system/SystemLogStderr.h"
#include "platform/linux/system/UsageFilePosix.h"
#include "usage/UsageStore.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace quillox {

namespace {

    using Clock = std::chrono::steady_clock;

    constexpr int sites = 50;
    constexpr int tenYears = 3650 * sites;
    constexpr int rounds = 7;
    constexpr auto today = "2025-06-30";
    constexpr auto liveSite = "department-07.museum.example.org";

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

    double peakMebibytes()
    {
        rusage usage {};
        getrusage(RUSAGE_SELF, &usage);
        return static_cast<double>(usage.ru_maxrss) / 1024;
    }

    double median(std::vector<double> values)
    {
        std::ranges::sort(values);
        return values[values.size() / 2];
    }

    struct Figures {
        double load = 0; ///< Seconds of processor time.
        double work = 0; ///< Seconds of processor time per save, of all threads.
        double held = 0; ///< Seconds for which a save kept the main thread.
        double untilStored = 0; ///< Seconds until it was on the disk.
        double peak = 0; ///< Memory of the whole process, in MiB.
        bool isUnchangedWritten = false;
    };

    /// Runs in a process of its own, so that its memory is nobody else's.
    Figures inOwnProcess(const std::function<Figures()>& measure)
    {
        int ends[2];
        Figures figures;
        if (pipe(ends) != 0)
            std::abort();
        const auto child = fork();
        if (child == 0) {
            figures = measure();
            figures.peak = peakMebibytes();
            _exit(write(ends[1], &figures, sizeof figures) == sizeof figures ? 0 : 1);
        }
        int status = 0;
        close(ends[1]);
        if (read(ends[0], &figures, sizeof figures) != sizeof figures
            || waitpid(child, &status, 0) != child || status != 0)
            std::abort();
        close(ends[0]);
        return figures;
    }

    /// Every site is used on every day, in ten hours of it.
    void makeFile(const std::string& path, int records, bool isInOrder)
    {
        std::vector<int> order(static_cast<std::size_t>(records));
        for (int index = 0; index < records; ++index)
            order[static_cast<std::size_t>(index)] = index;
        if (!isInOrder)
            std::ranges::shuffle(order, std::minstd_rand(1));
        std::ofstream out(path);
        out << R"({"days":[)";
        const char* separator = "";
        for (const auto index : order) {
            const std::chrono::sys_days first(std::chrono::year_month_day(
                std::chrono::year(2015), std::chrono::July, std::chrono::day(1)));
            const std::chrono::year_month_day day = first + std::chrono::days(index / sites);
            out << fmt::format(
                R"({}{{"date":"{:04}-{:02}-{:02}","source":"department-{:02}.museum.example.org",)"
                R"("sessions":{},"activeSeconds":{},"hours":[0,0,0,0,0,0,0,0,3,8,12,14,9,7,11,13,10,6,0,0,0,0,0,0]}})",
                separator, static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()), index % sites, 93 + index % 7, 28'431 + index);
            separator = ",";
        }
        out << R"(],"lastUsed":772980000.25})";
    }

    Figures measureStore(const std::string& path)
    {
        SystemLogStderr log;
        RunLoopGlib runLoop;
        CalendarPosix calendar;
        const UsageDate dates(calendar, runLoop);
        UsageFilePosix file(path, log);
        Figures figures;
        const auto beforeLoad = processorSeconds();
        UsageStore store(file, dates);
        figures.load = processorSeconds() - beforeLoad;
        std::vector<double> works, helds, storings;
        for (int round = 0; round < rounds; ++round) {
            store.recordSessionStart(liveSite, today, round);
            const auto work = processorSeconds();
            const auto begin = Clock::now();
            store.save();
            helds.push_back(secondsSince(begin));
            if (!file.flush().empty())
                std::abort();
            storings.push_back(secondsSince(begin));
            works.push_back(processorSeconds() - work);
        }
        figures.work = median(works);
        figures.held = median(helds);
        figures.untilStored = median(storings);
        const auto written = std::filesystem::last_write_time(path);
        store.save();
        file.flush();
        figures.isUnchangedWritten = std::filesystem::last_write_time(path) != written;
        return figures;
    }

    Figures measureTree(const std::string& path)
    {
        Figures figures;
        const auto before = processorSeconds();
        std::ifstream in(path);
        const auto tree = nlohmann::json::parse(in);
        figures.load = processorSeconds() - before;
        const auto work = processorSeconds();
        std::ofstream(path + ".tree") << tree;
        figures.work = processorSeconds() - work;
        return figures;
    }

    bool report(const std::string& what, int records, const Figures& figures, bool isPromised)
    {
        const bool isMet = figures.load < 0.5 && figures.work < 0.2 && figures.held < 0.005
            && figures.peak < 80e6 / (1 << 20) && !figures.isUnchangedWritten;
        fmt::print("{:<24}{:>8}{:>10.1f}{:>10.0f}{:>10.1f}{:>10.0f}{:>10.2f}{:>10.1f}{:>10.1f}{}\n",
            what, records, figures.load * 1e3, figures.load * 1e9 / records, figures.work * 1e3,
            figures.work * 1e9 / records, figures.held * 1e3, figures.untilStored * 1e3,
            figures.peak,
            !isPromised ? ""
                : isMet ? "  met"
                        : "  MISSED");
        return isMet;
    }

    void run(const std::filesystem::path& folder)
    {
        const auto path = (folder / "usage.json").string();
        fmt::print("{:<24}{:>8}{:>10}{:>10}{:>10}{:>10}{:>10}{:>10}{:>10}\n", "", "records",
            "load ms", "ns each", "save ms", "ns each", "held ms", "stored ms", "peak MiB");
        for (const int records : { 1'000, 10'000, 100'000, tenYears }) {
            makeFile(path, records, true);
            Figures tree = inOwnProcess([&] { return measureTree(path); });
            std::vector<Figures> all;
            for (int round = 0; round < rounds; ++round)
                all.push_back(inOwnProcess([&] { return measureStore(path); }));
            std::ranges::sort(all, {}, &Figures::load);
            auto figures = all[all.size() / 2];
            for (const auto& one : all)
                figures.held = std::max(figures.held, one.held);
            report("statistics", records, figures, records == tenYears);
            report("tree of the same", records, tree, false);
        }
        makeFile(path, tenYears, false);
        report("statistics, shuffled", tenYears, inOwnProcess([&] { return measureStore(path); }),
            false);
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
