// What the keyboard lock adds to one event of the keyboard, beside two things that every program
// does: asking for the time, and looking a key up in a map of seventy.

#include "MedianTable.h"
#include "fakes/FakeKeyboard.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeSystemLog.h"
#include "lockdown/SystemKeyBlocker.h"

#include <benchmark/benchmark.h>
#include <ctime>
#include <map>
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

    void decision(benchmark::State& state)
    {
        const auto events = visit();
        for (auto _ : state)
            for (const auto& event : events)
                benchmark::DoNotOptimize(decideKey(event, false));
        perItem(state, events.size());
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
        perItem(state, events.size());
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
        perItem(state, 1);
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
        perItem(state, events.size());
    }

    BENCHMARK(decision)->Name("decideKey");
    BENCHMARK(tapOfVisit)->Name("SystemKeyBlocker");
    BENCHMARK(tapOfGesture)->Name("SystemKeyBlocker, gesture");
    BENCHMARK(clockReading)->Name(clockName);
    BENCHMARK(mapLookup)->Name(mapName);

} // namespace

} // namespace quillox

int main(int argc, char** argv)
{
    using namespace quillox;
    return runInto({ { clockName, mapName }, reachNanoseconds }, argc, argv);
}
