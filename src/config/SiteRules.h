#pragma once

#include "config/KioskSettings.h"

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// Which addresses belong to the site that the operator chose. Fixed when it is made; cheap to ask.
class SiteRules {
public:
    /// The start address of the settings is compared as it is written, so give it in the form in
    /// which the addresses to be judged will come.
    explicit SiteRules(const KioskSettings&);

    /// Hosts and paths are compared as plain text. Extra domains are good for their subdomains and
    /// for every path; the start host only for its own section where the settings say so.
    bool isAllowed(const Url&) const;

    /// The host of the start address; none where that is no remote one.
    const std::optional<std::string>& startHost() const { return m_startHost; }

    /// Whether nothing at all is refused.
    bool allowsEverything() const { return !m_restrictsDomain; }

private:
    bool isExtraDomain(const std::string& host) const;
    bool isInSection(const Url&) const;

    bool m_restrictsDomain;
    bool m_isLocal;
    std::optional<std::string> m_startHost;
    std::vector<std::string> m_allowedHosts; ///< Sorted.
    std::optional<std::string> m_pathPrefix; ///< Only where the settings confine pages to it.
};

} // namespace quillox
