#include "config/SiteRules.h"

#include "config/PercentEscapes.h"
#include "support/CanonicalText.h"

#include <algorithm>
#include <string_view>

namespace quillox {

namespace {

    std::string_view trimmed(std::string_view text, std::string_view characters)
    {
        const auto first = text.find_first_not_of(characters);
        if (first == std::string_view::npos)
            return {};
        return text.substr(first, text.find_last_not_of(characters) - first + 1);
    }

    bool isSubdomain(std::string_view host, std::string_view domain)
    {
        return host.size() > domain.size() && host.ends_with(domain)
            && host[host.size() - domain.size() - 1] == '.';
    }

    bool hasDotSegment(std::string_view path)
    {
        while (true) {
            const auto slash = path.find_first_of("/\\");
            const auto segment = path.substr(0, slash);
            if (segment == "." || segment == "..")
                return true;
            if (slash == std::string_view::npos)
                return false;
            path.remove_prefix(slash + 1);
        }
    }

    /// Only what was escaped more than once, or has escaped slashes, still has such parts when it
    /// comes here; a server may decode it again and again, and lead elsewhere.
    bool mayLeadUp(std::string path)
    {
        while (!hasDotSegment(path)) {
            auto decoded = percentDecoded(path);
            if (!decoded || *decoded == path)
                return false;
            path = std::move(*decoded);
        }
        return true;
    }

} // namespace

std::optional<std::string> KioskSettings::normalizeHost(std::string_view text)
{
    constexpr std::string_view schemeEnd = "://";
    const auto lowered = lowercased(trimmed(text, " \t"));
    std::string_view host = lowered;
    if (const auto scheme = host.find(schemeEnd); scheme != std::string_view::npos)
        host.remove_prefix(scheme + schemeEnd.size());
    host = trimmed(host.substr(0, host.find('/')), ". ");
    if (host.empty())
        return std::nullopt;
    return std::string(host);
}

std::vector<std::string> KioskSettings::allowedHosts() const
{
    std::vector<std::string> hosts;
    for (const auto& domain : allowedDomains) {
        if (auto host = normalizeHost(domain))
            hosts.push_back(std::move(*host));
    }
    return hosts;
}

std::optional<std::string> KioskSettings::lockedPathPrefix() const
{
    const auto start = startURL();
    if (!start || start->path().empty() || start->path() == "/")
        return std::nullopt;
    auto path = start->path();
    if (path.ends_with('/'))
        path.pop_back();
    return path;
}

SiteRules::SiteRules(const KioskSettings& settings)
    : m_restrictsDomain(settings.restrictToDomain)
    , m_isLocal(settings.isLocalSource())
    , m_allowedHosts(settings.allowedHosts())
{
    std::ranges::sort(m_allowedHosts);
    if (const auto start = settings.startURL())
        m_startHost = start->host();
    if (settings.restrictToPath)
        m_pathPrefix = settings.lockedPathPrefix();
}

bool SiteRules::isAllowed(const Url& url) const
{
    if (url.scheme() == "qxlocal" || !m_restrictsDomain)
        return true;
    if (m_isLocal)
        return false;
    const auto scheme = url.lowercaseScheme();
    if ((scheme != "http" && scheme != "https") || !m_startHost || !url.host())
        return false;
    if (isExtraDomain(lowercased(*url.host())))
        return true;
    if (m_pathPrefix)
        return *url.host() == *m_startHost && isInSection(url);
    return *url.host() == *m_startHost || isSubdomain(*url.host(), *m_startHost);
}

bool SiteRules::isExtraDomain(const std::string& host) const
{
    for (std::string_view domain = host;;) {
        if (std::ranges::binary_search(m_allowedHosts, domain))
            return true;
        const auto dot = domain.find('.');
        if (dot == std::string_view::npos)
            return false;
        domain.remove_prefix(dot + 1);
    }
}

bool SiteRules::isInSection(const Url& url) const
{
    const auto& path = url.path();
    if (path == *m_pathPrefix)
        return true;
    return path.starts_with(*m_pathPrefix) && path[m_pathPrefix->size()] == '/' && !mayLeadUp(path);
}

} // namespace quillox
