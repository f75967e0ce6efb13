// What the keyboard lock adds to one event of the keyboard, beside two things that every program
// does: asking for the time, and looking a key up in a map of seventy.

#include "fakes/FakeKeyboard.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeSystemLog.h"
#include "lockdown/SystemKeyBlocker.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <ctime>
#include <fmt/format.h>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

namespace {

    using enum ModifierFlags;
    constexpr auto gesture = Command | Shift;
    constexpr double reachNanoseconds = 1000;
    constexpr auto clockName = "clock_gettime";
    constexpr auto mapName = "std::map of 70";
    constexpr KeyCode shiftKey = 56, commandKey = 55, controlKey = 59;

    /// Keys as somebody types them, each event as the system would report it.
    class Typist {
    public:
        std::vector<Event> events;

        void stroke(KeyCode key, int repeats = 0)
        {
            events.push_back({ .type = EventType::KeyDown, .keyCode = key, .flags = m_flags });
            for (int count = 0; count < repeats; ++count)
                events.push_back({ EventType::KeyDown, key, m_flags, true });
            events.push_back({ .type = EventType::KeyUp, .keyCode = key, .flags = m_flags });
        }
        void modify(KeyCode key, ModifierFlags flags)
        {
            m_flags = flags;
            events.push_back({ .type = EventType::FlagsChanged, .keyCode = key, .flags = flags });
        }
        void media()
        {
            events.push_back(
                { .type = EventType::SystemDefined, .subtype = auxiliaryControlButtons });
        }

    private:
        ModifierFlags m_flags = None;
    };

    /// A visitor who fills in a form, with a capital now and then, a held backspace, shortcuts and
    /// a media key tried in vain; once, the gesture is held briefly. The only releases of S are
    /// those of the text and of the gesture.
    std::vector<Event> visit()
    {
        constexpr KeyCode lettersOfText[]
            = { 0, 1, 14, 45, 31, 15, 49, 17, 4, 34, 1, 49, 8, 37, 16, 49, 2, 3, 32, 36 };
        constexpr KeyCode backspace = 51, tab = 48, leftArrow = 123, q = 12;
        Typist typist;
        for (int line = 0; line < 20; ++line) {
            typist.modify(shiftKey, Shift);
            typist.stroke(lettersOfText[line]);
            typist.modify(shiftKey, None);
            for (const auto key : lettersOfText)
                typist.stroke(key);
            typist.stroke(backspace, 12);
            typist.stroke(leftArrow);
            typist.stroke(tab);
            if (line % 5 == 0) {
                typist.modify(controlKey, Control);
                typist.stroke(q);
                typist.modify(controlKey, None);
                typist.media();
            }
        }
        typist.modify(commandKey, Command);
        typist.modify(shiftKey, gesture);
        typist.stroke(keys::s, 5);
        typist.modify(shiftKey, Command);
        typist.modify(commandKey, None);
        return typist.events;
    }

    /// `events` is how many each turn of the benchmark's loop handled.
    void perEvent(benchmark::State& state, std::size_t events)
    {
        state.SetItemsProcessed(
            static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(events));
    }

    void decision(benchmark::State& state)
    {
        const auto events = visit();
        for (auto _ : state)
            for (const auto& event : events)
                benchmark::DoNotOptimize(decideKey(event, false));
        perEvent(state, events.size());
    }

    /// A blocker that runs, on a keyboard and a main loop in memory.
    struct Sealed {
        Journal journal;
        FakeKeyboard keyboard { journal };
        FakeRunLoop runLoop;
        FakeSystemLog log;
        SystemKeyBlocker blocker { { runLoop, keyboard, keyboard, log } };
        double progress = 0;

        Sealed()
        {
            blocker.onHoldProgress = [this](double value) { progress = value; };
            blocker.start();
        }
    };

    void tap(benchmark::State& state, const std::vector<Event>& events)
    {
        Sealed sealed;
        if (!sealed.keyboard.isTapped())
            state.SkipWithError("the blocker does not run");
        for (auto _ : state)
            for (const auto& event : events)
                benchmark::DoNotOptimize(sealed.keyboard.send(event));
        perEvent(state, events.size());
    }

    void tapOfVisit(benchmark::State& state)
    {
        tap(state, visit());
    }

    /// The dearest pair of events: a hold is begun, with its timer, and broken off.
    void tapOfGesture(benchmark::State& state)
    {
        tap(state,
            { { .type = EventType::KeyDown, .keyCode = keys::s, .flags = gesture },
                { .type = EventType::KeyUp, .keyCode = keys::s, .flags = gesture } });
    }

    void clockReading(benchmark::State& state)
    {
        timespec time {};
        for (auto _ : state) {
            benchmark::DoNotOptimize(clock_gettime(CLOCK_MONOTONIC, &time));
            benchmark::DoNotOptimize(time);
        }
        perEvent(state, 1);
    }

    void mapLookup(benchmark::State& state)
    {
        const auto events = visit();
        std::map<unsigned, int> map;
        for (unsigned key = 0; key < 70; ++key)
            map.emplace(key, static_cast<int>(key));
        for (auto _ : state)
            for (const auto& event : events)
                benchmark::DoNotOptimize(map.find(event.keyCode));
        perEvent(state, events.size());
    }

    BENCHMARK(decision)->Name("decideKey");
    BENCHMARK(tapOfVisit)->Name("SystemKeyBlocker");
    BENCHMARK(tapOfGesture)->Name("SystemKeyBlocker, gesture");
    BENCHMARK(clockReading)->Name(clockName);
    BENCHMARK(mapLookup)->Name(mapName);

    /// Keeps the median of each benchmark's repetitions, per event. Prints nothing.
    class Medians final : public benchmark::BenchmarkReporter {
    public:
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
            fmt::print("{:<28}{:>12}{:>18}{:>18}\n", "median of the repetitions", "ns/event",
                "/ clock_gettime", "/ map lookup");
            for (const auto& [name, nanoseconds] : m_nanoseconds)
                fmt::print("{:<28}{:>12.1f}{:>18.2f}{:>18.2f}  {}\n", name, nanoseconds,
                    nanoseconds / of(clockName), nanoseconds / of(mapName),
                    verdict(name, nanoseconds));
        }

    private:
        /// Not a number when a filter left the benchmark out.
        double of(const std::string& name) const
        {
            const auto found = m_nanoseconds.find(name);
            return found != m_nanoseconds.end() ? found->second : std::nan("");
        }

        static std::string_view verdict(const std::string& name, double nanoseconds)
        {
            if (name == clockName || name == mapName)
                return {};
            return nanoseconds < reachNanoseconds ? "reach < 1000  met" : "reach < 1000  MISSED";
        }

        std::map<std::string, double> m_nanoseconds;
    };

} // namespace

} // namespace quillox

int main(int argc, char** argv)
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
    quillox::Medians medians;
    benchmark::RunSpecifiedBenchmarks(&medians);
    benchmark::Shutdown();
    if (medians.hasFailed)
        return 1;
    medians.print();
    return 0;
}
