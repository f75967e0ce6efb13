#pragma once

#include "usage/UsageDate.h"
#include "usage/UsageRecords.h"

#include <optional>
#include <string>
#include <vector>

namespace quillox {

class UsageFile;

/// The statistics of this machine: per day and site, in memory and in one file. Nothing of it
/// leaves the machine by itself. Additions that overflow end the program. Main thread only.
class UsageStore {
public:
    struct Summary {
        std::int64_t sessions = 0;
        std::int64_t activeSeconds = 0;

        bool operator==(const Summary&) const = default;
    };
    struct SourceSummary {
        std::string source;
        Summary summary;

        bool operator==(const SourceSummary&) const = default;
    };

    /// Loads the file. Both must outlive the store.
    UsageStore(UsageFile&, const UsageDate&);

    /// Replaces what is in memory by what the file holds: nothing when it is missing or damaged. A
    /// damaged file is set aside before anything is written.
    void load();

    /// Writes everything, by and by, unless the file holds it already.
    void save();

    void recordSessionStart(const std::string& source, const std::string& day, int hour);

    /// Nothing for 0 and below.
    void addActive(std::int64_t seconds, const std::string& source, const std::string& day);

    /// Per site, those with the most sessions first. `lastDays` counts today; none is all time.
    std::vector<SourceSummary> perSource(std::optional<int> lastDays) const;

    /// The sum over all sites; none for `lastDays` is all time.
    Summary total(std::optional<int> lastDays) const;

    /// The records in the order of their days; none for `lastDays` is all time.
    void visit(std::optional<int> lastDays, const UsageRecords::Visitor&) const;

    /// The hour of the day, 0 to 23, in which most sessions began; the earliest of equals.
    std::optional<int> peakHour() const;

    /// Forgets everything, and saves.
    void reset();

    const UsageRecords& days() const { return m_days; }
    bool isEmpty() const { return m_days.isEmpty(); }

    const std::optional<RunLoop::WallTime>& lastUsed() const { return m_lastUsed; }
    void setLastUsed(RunLoop::WallTime);
    const UsageDate& dates() const { return m_dates; }

private:
    UsageFile& m_file;
    const UsageDate& m_dates;
    UsageRecords m_days;
    std::optional<RunLoop::WallTime> m_lastUsed;
    bool m_hasChanged = false; ///< Since it was last saved or loaded.
};

} // namespace quillox
