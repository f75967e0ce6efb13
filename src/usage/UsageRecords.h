#pragma once

#include "ports/RunLoop.h"
#include "usage/UsageDay.h"

#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

/// All records of the statistics, by day and site. Taking a copy is cheap whatever their number,
/// because days that are over are shared by all copies; so a copy can be written elsewhere while
/// counting goes on.
class UsageRecords {
public:
    /// The record of that day and site, made with zeros where there is none. The reference is good
    /// until the next call.
    struct Counts {
        std::int64_t sessions = 0;
        std::int64_t activeSeconds = 0;
        std::array<std::int64_t, UsageDay::hoursPerDay> hours {};
    };
    Counts& at(const std::string& date, const std::string& source);

    bool isEmpty() const { return m_past.empty() && m_live.empty(); }
    void clear();

    /// Days in their order. `source` is good as long as the records.
    using Visitor
        = std::function<void(const std::string& date, const std::string& source, const Counts&)>;
    void visit(const Visitor&) const;

private:
    struct Entry {
        std::uint32_t source; ///< An index into the list of sources.
        Counts counts;
    };
    using Day = std::vector<Entry>;
    using Sources = std::vector<std::string>;

    void makeLive(const std::string& date);
    std::uint32_t indexOf(const std::string& source);

    /// Changed only while no copy shares it.
    std::map<std::string, std::shared_ptr<Day>> m_past;
    std::string m_liveDate;
    Day m_live; ///< The one day that may change; not among the past.
    std::shared_ptr<const Sources> m_sources = std::make_shared<Sources>();
    std::uint32_t m_lastSource = 0; ///< That of the last `at`.
};

} // namespace quillox
