#include "usage/UsageRecords.h"

#include <algorithm>

namespace quillox {

UsageRecords::Counts& UsageRecords::at(const std::string& date, const std::string& source)
{
    if (date != m_liveDate)
        makeLive(date);
    const auto& sources = *m_sources;
    const auto present = std::ranges::find_if(
        m_live, [&](const Entry& entry) { return sources[entry.source] == source; });
    if (present != m_live.end())
        return present->counts;
    m_live.push_back({ indexOf(source), {} });
    return m_live.back().counts;
}

void UsageRecords::makeLive(const std::string& date)
{
    if (!m_live.empty())
        m_past[m_liveDate] = std::make_shared<const Day>(std::move(m_live));
    m_live.clear();
    m_liveDate = date;
    if (const auto past = m_past.find(date); past != m_past.end()) {
        m_live = *past->second;
        m_past.erase(past);
    }
}

std::uint32_t UsageRecords::indexOf(const std::string& source)
{
    const auto present = std::ranges::find(*m_sources, source);
    const auto index = static_cast<std::uint32_t>(present - m_sources->begin());
    if (present == m_sources->end()) {
        auto more = *m_sources;
        more.push_back(source);
        m_sources = std::make_shared<const Sources>(std::move(more));
    }
    return index;
}

void UsageRecords::clear()
{
    *this = {};
}

void UsageRecords::visit(const Visitor& visitor) const
{
    const auto visitDay = [&](const std::string& date, const Day& day) {
        for (const auto& entry : day)
            visitor(date, (*m_sources)[entry.source], entry.counts);
    };
    const auto next = m_past.upper_bound(m_liveDate);
    for (auto past = m_past.begin(); past != next; ++past)
        visitDay(past->first, *past->second);
    visitDay(m_liveDate, m_live);
    for (auto past = next; past != m_past.end(); ++past)
        visitDay(past->first, *past->second);
}

} // namespace quillox
