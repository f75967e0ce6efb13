// What one event of a visitor's input costs the idle watch and the statistics together, with ten
// years of 50 sites in memory, beside reading the clock and writing down the local day.

#include "MedianTable.h"
#include "kiosk/IdleWatch.h"
#include "platform/linux/system/CalendarPosix.h"
#include "usage/UsageTracker.h"

#include "fakes/FakeUsage.h"

#include <cstdlib>
#include <ctime>
#include <new>

namespace {

std::size_t allocations = 0;

} // namespace

void* operator new(std::size_t size)
{
    ++allocations;
    if (auto* memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr double reachNanoseconds = 1000;
    constexpr auto clockName = "clock_gettime";
    constexpr auto dayName = "strftime of the day";

    /// The real clocks, which the benchmark can turn forward together. No timer ever fires.
    class Clocks final : public RunLoop {
    public:
        void skip(Duration duration) { m_skipped += duration; }

        WallTime now() const override { return std::chrono::system_clock::now() + m_skipped; }
        MonotonicTime monotonicNow() const override
        {
            return std::chrono::steady_clock::now() + m_skipped;
        }
        Handle after(Duration, Callback) override { return {}; }
        Handle every(Duration, Callback) override { return {}; }
        void post(Callback) override { }

    private:
        Duration m_skipped { 0 };
    };

    class Monitors final : public EventMonitors {
    public:
        void send(const Event& event)
        {
            for (const auto& [mask, handler] : m_monitors)
                if (mask & maskOf(event.type))
                    handler(event);
        }
        Handle addLocalMonitor(EventMask mask, Handler handler) override
        {
            m_monitors.emplace_back(mask, std::move(handler));
            return Handle([] {});
        }

    private:
        std::vector<std::pair<EventMask, Handler>> m_monitors;
    };

    /// A run whose visitors' input comes so far apart.
    void input(benchmark::State& state, RunLoop::Duration pause)
    {
        Clocks clocks;
        Monitors monitors;
        FakeUsageFile file;
        CalendarPosix calendar;
        UsageTracker tracker(clocks, file, calendar);
        for (int day = 1; day <= 3650; ++day)
            for (int site = 0; site < 50; ++site)
                tracker.store().recordSessionStart(
                    fmt::format("department-{:02}.museum.example.org", site),
                    tracker.store().dates().daysAgo(day), 9);

        IdleWatch watch(clocks, monitors);
        watch.start(60s, [] {});
        tracker.begin("department-49.museum.example.org", 60s);
        const auto monitor = monitors.addLocalMonitor(activityMask, [&](const Event&) {
            tracker.recordActivity(clocks.now());
            return EventMonitors::Verdict::Pass;
        });
        const Event event { .type = EventType::MouseMoved };
        const auto today = [&] { return tracker.store().dates().daysAgo(0); };
        std::size_t inDays = 0;
        auto day = today();
        monitors.send(event);
        for (auto _ : state) {
            const auto before = allocations;
            monitors.send(event);
            const auto during = allocations - before;
            clocks.skip(pause);
            if (during == 0)
                continue;
            // Only the first event of a day may.
            const auto now = today();
            inDays += now == day ? during : 0;
            day = now;
        }
        perItem(state, 1);
        if (inDays > 0)
            state.SkipWithError("an event within a day allocated memory");
        if (tracker.store().total(std::nullopt).sessions != 182'501)
            state.SkipWithError("the events were not counted");
    }

    void mouse(benchmark::State& state)
    {
        input(state, 0s);
    }

    /// Each adds to the statistics, and every nine hundredth asks for the local time.
    void secondsApart(benchmark::State& state)
    {
        input(state, 1s);
    }

    void clockReading(benchmark::State& state)
    {
        timespec time {};
        for (auto _ : state) {
            benchmark::DoNotOptimize(clock_gettime(CLOCK_MONOTONIC, &time));
            benchmark::DoNotOptimize(time);
        }
        perItem(state, 1);
    }

    void dayWriting(benchmark::State& state)
    {
        std::tm parts {};
        char text[16];
        for (auto _ : state) {
            const auto now = std::time(nullptr);
            localtime_r(&now, &parts);
            benchmark::DoNotOptimize(std::strftime(text, sizeof text, "%F", &parts));
            benchmark::DoNotOptimize(text);
        }
        perItem(state, 1);
    }

    BENCHMARK(mouse)->Name("input, a moving mouse");
    BENCHMARK(secondsApart)->Name("input, a second apart");
    BENCHMARK(clockReading)->Name(clockName);
    BENCHMARK(dayWriting)->Name(dayName);

} // namespace

} // namespace quillox

int main(int argc, char** argv)
{
    using namespace quillox;
    return runInto({ { clockName, dayName }, reachNanoseconds }, argc, argv);
}
