#pragma once

#include "usage/UsageStore.h"

#include <string>
#include <vector>

namespace quillox {

/// The sheet that tells the operator how much the display is used: every text of it, for whoever
/// draws it. Main thread only.
class UsageStatsView {
public:
    static constexpr auto title = "USAGE";
    static constexpr auto subtitle = "Anonymous, on-device — how much the display gets used";
    static constexpr auto closeSymbol = "xmark";
    static constexpr auto emptyText = "NO DATA YET — SEAL A SITE TO START COUNTING";
    static constexpr auto websitesTitle = "BY WEBSITE";
    static constexpr auto resetLabel = "RESET STATS";
    static constexpr std::size_t topSourceLimit = 8;

    struct Row {
        std::string title;
        std::string value; ///< Empty for the row that stands for all further sites.

        bool operator==(const Row&) const = default;
    };

    /// What the sheet shows at a moment.
    struct Body {
        bool isEmpty = true; ///< Then there is only `emptyText`.
        std::vector<Row> statistics; ///< Last 7 days, last 30 days, all time; or as asked for.
        std::vector<Row> lines; ///< Busiest hour, where there is one, and last use.
        std::vector<Row> websites;

        bool operator==(const Body&) const = default;
    };

    explicit UsageStatsView(UsageStore& store)
        : m_store(store)
    {
    }

    /// With `lastDays`, sums and sites are of so many days up to today.
    Body body(std::optional<int> lastDays = std::nullopt) const;

    /// Forgets everything. `version` grows, so that the sheet is drawn anew.
    void resetStats();
    int version() const { return m_version; }

    /// "12M ENGAGED", from an hour on "1H 2M ENGAGED".
    static std::string duration(std::int64_t seconds);
    /// Sessions and engaged time.
    static std::string stat(const UsageStore::Summary&);
    std::string lastUsedText() const;
    static std::string hourText(int hour);

private:
    UsageStore& m_store;
    int m_version = 0;
};

} // namespace quillox
