#include "usage/UsageRecords.h"

#include <algorithm>
#include <atomic>

namespace quillox {

UsageRecords::Counts& UsageRecords::at(const std::string& date, const std::string& source)
{
    if (date != m_liveDate)
        makeLive(date);
    const auto index = indexOf(source);
    const auto present = std::ranges::find(m_live, index, &Entry::source);
    if (present != m_live.end())
        return present->counts;
    // Less ahead than a vector does by itself, as there are thousands of days.
    if (m_live.size() == m_live.capacity())
        m_live.reserve(m_live.size() + 4 + m_live.size() / 8);
    m_live.push_back({ index, {} });
    return m_live.back().counts;
}

void UsageRecords::makeLive(const std::string& date)
{
    if (!m_live.empty())
        m_past[m_liveDate] = std::make_shared<Day>(std::move(m_live));
    m_live = {};
    m_liveDate = date;
    const auto past = m_past.find(date);
    if (past == m_past.end())
        return;
    const bool isShared = past->second.use_count() > 1;
    // A copy that was here until just now may have been read on another thread.
    std::atomic_thread_fence(std::memory_order_acquire);
    if (isShared)
        m_live = *past->second;
    else
        m_live = std::move(*past->second);
    m_past.erase(past);
}

std::uint32_t UsageRecords::indexOf(const std::string& source)
{
    // It is the same again, or, while a file is read, mostly the next.
    const auto count = static_cast<std::uint32_t>(m_sources->size());
    for (std::uint32_t step = 0; step < count; ++step) {
        const auto index = (m_lastSource + step) % count;
        if ((*m_sources)[index] == source)
            return m_lastSource = index;
    }
    auto more = *m_sources;
    more.push_back(source);
    m_sources = std::make_shared<const Sources>(std::move(more));
    return m_lastSource = count;
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
