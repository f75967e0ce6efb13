#include "usage/UsageStatsView.h"

#include <algorithm>
#include <fmt/format.h>

namespace quillox {

namespace {

    constexpr int lastWeek = 7;
    constexpr int lastMonth = 30;

} // namespace

UsageStatsView::Body UsageStatsView::body(std::optional<int> lastDays) const
{
    Body body;
    body.isEmpty = m_store.isEmpty();
    if (body.isEmpty)
        return body;
    body.statistics = { { "LAST 7 DAYS", stat(m_store.total(lastWeek)) },
        { "LAST 30 DAYS", stat(m_store.total(lastMonth)) },
        { "ALL TIME", stat(m_store.total(std::nullopt)) } };
    if (lastDays)
        body.statistics
            = { { fmt::format("LAST {} DAYS", *lastDays), stat(m_store.total(lastDays)) } };
    if (const auto hour = m_store.peakHour())
        body.lines.push_back({ "BUSIEST HOUR", hourText(*hour) });
    body.lines.push_back({ "LAST USED", lastUsedText() });

    const auto sources = m_store.perSource(lastDays);
    const auto shown = std::min(sources.size(), topSourceLimit);
    for (std::size_t index = 0; index < shown; ++index)
        body.websites.push_back({ sources[index].source, stat(sources[index].summary) });
    if (sources.size() > shown)
        body.websites.push_back({ fmt::format("+{} MORE", sources.size() - shown), "" });
    return body;
}

void UsageStatsView::resetStats()
{
    m_store.reset();
    ++m_version;
}

std::string UsageStatsView::duration(std::int64_t seconds)
{
    const auto minutes = seconds / 60;
    if (seconds < 3600)
        return fmt::format("{}M ENGAGED", minutes);
    const auto hours = minutes / 60;
    return fmt::format("{}H {}M ENGAGED", hours, minutes - hours * 60);
}

std::string UsageStatsView::stat(const UsageStore::Summary& summary)
{
    return fmt::format("{} SESSIONS · {}", summary.sessions, duration(summary.activeSeconds));
}

std::string UsageStatsView::hourText(int hour)
{
    return fmt::format("{:02}:00–{:02}:00", hour, (hour + 1) % 24);
}

std::string UsageStatsView::lastUsedText() const
{
    using namespace std::chrono;
    constexpr std::int64_t longestDays = 29;
    const auto& used = m_store.lastUsed();
    if (!used)
        return "—";
    const auto elapsed = duration_cast<seconds>(m_store.dates().now() - *used).count();
    if (elapsed < 60)
        return "JUST NOW";
    if (elapsed < 3600)
        return fmt::format("{}M AGO", elapsed / 60);
    if (elapsed < 86400)
        return fmt::format("{}H AGO", elapsed / 3600);
    const auto days = elapsed / 86400;
    return days <= longestDays ? fmt::format("{}D AGO", days) : m_store.dates().fmt(*used);
}

} // namespace quillox
