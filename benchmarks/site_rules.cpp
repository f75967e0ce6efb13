// What judging one address costs, beside two things that every program does: asking for the time,
// and having GLib read an address.

#include "MedianTable.h"
#include "config/SiteRules.h"

#include <ctime>
#include <glib.h>
#include <memory>

namespace quillox {

namespace {

    constexpr double reachNanoseconds = 1000;
    constexpr auto textName = "Url::parse and isAllowed";
    constexpr auto clockName = "clock_gettime";
    constexpr auto readingName = "g_uri_parse";
    constexpr auto address
        = "https://tickets.museum-partner.example.net/exhibits/room-1/?lang=en#top";

    /// A hundred extra domains, none of which is the address's; each ends as it does.
    SiteRules rules()
    {
        KioskSettings settings;
        settings.url = "https://www.museum.example.org/exhibits/";
        settings.restrictToPath = true;
        for (int number = 0; number < 100; ++number)
            settings.allowedDomains.push_back(
                fmt::format("partner-{:02}.museum-partner.example.net", number));
        return SiteRules(settings);
    }

    void refusal(benchmark::State& state)
    {
        const auto site = rules();
        const auto url = Url::parse(address);
        if (!url || site.isAllowed(*url))
            state.SkipWithError("the address is not refused");
        for (auto _ : state)
            benchmark::DoNotOptimize(site.isAllowed(*url));
        perItem(state, 1);
    }

    void refusalOfText(benchmark::State& state)
    {
        const auto site = rules();
        for (auto _ : state) {
            const auto url = Url::parse(address);
            benchmark::DoNotOptimize(url && site.isAllowed(*url));
        }
        perItem(state, 1);
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

    void readingByGlib(benchmark::State& state)
    {
        for (auto _ : state) {
            const std::unique_ptr<GUri, decltype(&g_uri_unref)> uri(
                g_uri_parse(address, G_URI_FLAGS_NONE, nullptr), g_uri_unref);
            benchmark::DoNotOptimize(uri.get());
        }
        perItem(state, 1);
    }

    BENCHMARK(refusal)->Name("isAllowed, 100 domains");
    BENCHMARK(refusalOfText)->Name(textName);
    BENCHMARK(clockReading)->Name(clockName);
    BENCHMARK(readingByGlib)->Name(readingName);

} // namespace

} // namespace quillox

int main(int argc, char** argv)
{
    using namespace quillox;
    return runInto({ { clockName, readingName }, reachNanoseconds, { textName } }, argc, argv);
}
