#pragma once

#include <algorithm>
#include <benchmark/benchmark.h>
#include <cmath>
#include <fmt/format.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

/// `count` is how much each turn of the benchmark's loop did.
inline void perItem(benchmark::State& state, std::size_t count)
{
    state.SetItemsProcessed(
        static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(count));
}

/// Keeps the median of each benchmark's repetitions, per item. Prints nothing meanwhile.
class MedianTable final : public benchmark::BenchmarkReporter {
public:
    /// `reach` is what each of the benchmarks promises to stay below, in nanoseconds; the
    /// yardsticks promise nothing, nor do `others`.
    MedianTable(
        std::vector<std::string> yardsticks, double reach, std::vector<std::string> others = {})
        : m_yardsticks(std::move(yardsticks))
        , m_others(std::move(others))
        , m_reach(reach)
    {
    }

    bool hasFailed = false;

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const auto& run : runs) {
            hasFailed = hasFailed || run.error_occurred;
            if (run.aggregate_name == "median")
                m_nanoseconds[run.run_name.function_name]
                    = 1e9 / run.counters.at("items_per_second").value;
        }
    }

    void print() const
    {
        fmt::print("{:<32}{:>10}", "median of the repetitions", "ns/item");
        for (const auto& yardstick : m_yardsticks)
            fmt::print("{:>20}", "/ " + yardstick);
        fmt::print("\n");
        for (const auto& [name, nanoseconds] : m_nanoseconds) {
            fmt::print("{:<32}{:>10.1f}", name, nanoseconds);
            for (const auto& yardstick : m_yardsticks)
                fmt::print("{:>20.2f}", nanoseconds / of(yardstick));
            fmt::print("{}\n", verdict(name, nanoseconds));
        }
    }

private:
    /// Not a number when a filter left the benchmark out.
    double of(const std::string& name) const
    {
        const auto found = m_nanoseconds.find(name);
        return found != m_nanoseconds.end() ? found->second : std::nan("");
    }

    std::string verdict(const std::string& name, double nanoseconds) const
    {
        if (std::ranges::count(m_yardsticks, name) + std::ranges::count(m_others, name) > 0)
            return {};
        return fmt::format("  reach < {:g}  {}", m_reach, nanoseconds < m_reach ? "met" : "MISSED");
    }

    std::vector<std::string> m_yardsticks;
    std::vector<std::string> m_others;
    double m_reach; ///< Nanoseconds.
    std::map<std::string, double> m_nanoseconds;
};

/// Runs every benchmark of the program and prints the table; returns the exit status.
inline int runInto(MedianTable table, int argc, char** argv)
{
    // Interleaved, so that a slow drift of the machine falls on all of them.
    std::string repetitions = "--benchmark_repetitions=15";
    std::string interleaving = "--benchmark_enable_random_interleaving=true";
    std::string length = "--benchmark_min_time=0.1";
    std::vector<char*> arguments { argv[0], repetitions.data(), interleaving.data(),
        length.data() };
    arguments.insert(arguments.end(), argv + 1, argv + argc);
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    benchmark::RunSpecifiedBenchmarks(&table);
    benchmark::Shutdown();
    if (table.hasFailed)
        return 1;
    table.print();
    return 0;
}

} // namespace quillox
