#include "usage/UsageStore.h"

#include "ports/UsageFile.h"
#include "usage/UsageCoding.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace quillox {

namespace {

    void add(std::int64_t& total, std::int64_t amount)
    {
        if (__builtin_add_overflow(total, amount, &total)) {
            std::fputs("Quillox: the usage statistics overflow.\n", stderr);
            std::abort();
        }
    }

    void add(UsageStore::Summary& total, const UsageRecords::Counts& counts)
    {
        add(total.sessions, counts.sessions);
        add(total.activeSeconds, counts.activeSeconds);
    }

} // namespace

UsageStore::UsageStore(UsageFile& file, const UsageDate& dates)
    : m_file(file)
    , m_dates(dates)
{
    load();
}

void UsageStore::load()
{
    m_days.clear();
    m_lastUsed.reset();
    m_hasChanged = false;
    const auto text = m_file.read();
    if (!text)
        return;
    if (auto decoded = decodeUsage(*text)) {
        m_days = std::move(decoded->days);
        m_lastUsed = decoded->lastUsed;
    } else {
        m_file.setAside();
    }
}

void UsageStore::save()
{
    if (!m_hasChanged && !m_file.hasFailed())
        return;
    m_hasChanged = false;
    m_file.write([persisted = Usage { m_days, m_lastUsed }](
                     std::ostream& out) { encodeUsage(persisted, out); });
}

void UsageStore::recordSessionStart(const std::string& source, const std::string& day, int hour)
{
    auto& counts = m_days.at(day, source);
    add(counts.sessions, 1);
    if (hour >= 0 && hour < static_cast<int>(UsageDay::hoursPerDay))
        add(counts.hours[static_cast<std::size_t>(hour)], 1);
    m_hasChanged = true;
}

void UsageStore::addActive(std::int64_t seconds, const std::string& source, const std::string& day)
{
    if (seconds <= 0)
        return;
    add(m_days.at(day, source).activeSeconds, seconds);
    m_hasChanged = true;
}

void UsageStore::setLastUsed(RunLoop::WallTime time)
{
    m_lastUsed = time;
    m_hasChanged = true;
}

void UsageStore::visit(std::optional<int> lastDays, const UsageRecords::Visitor& visitor) const
{
    if (!lastDays)
        return m_days.visit(visitor);
    const auto first = m_dates.daysAgo(*lastDays - 1);
    m_days.visit([&](const std::string& date, const std::string& source, const auto& counts) {
        if (date >= first)
            visitor(date, source, counts);
    });
}

std::vector<UsageStore::SourceSummary> UsageStore::perSource(std::optional<int> lastDays) const
{
    std::map<std::string, Summary> totals;
    visit(lastDays, [&](const std::string&, const std::string& source, const auto& counts) {
        add(totals[source], counts);
    });
    std::vector<SourceSummary> list;
    for (const auto& [source, summary] : totals)
        list.push_back({ source, summary });
    std::ranges::stable_sort(
        list, std::greater {}, [](const SourceSummary& row) { return row.summary.sessions; });
    return list;
}

UsageStore::Summary UsageStore::total(std::optional<int> lastDays) const
{
    Summary total;
    visit(lastDays,
        [&](const std::string&, const std::string&, const auto& counts) { add(total, counts); });
    return total;
}

std::optional<int> UsageStore::peakHour() const
{
    std::array<std::int64_t, UsageDay::hoursPerDay> totals {};
    m_days.visit([&](const std::string&, const std::string&, const auto& counts) {
        for (std::size_t hour = 0; hour < totals.size(); ++hour)
            add(totals[hour], counts.hours[hour]);
    });
    const auto largest = std::ranges::max_element(totals);
    if (*largest <= 0)
        return std::nullopt;
    return static_cast<int>(largest - totals.begin());
}

void UsageStore::reset()
{
    m_days.clear();
    m_lastUsed.reset();
    m_hasChanged = true;
    save();
}

} // namespace quillox
