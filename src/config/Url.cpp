#include "config/Url.h"

#include "config/HostSyntax.h"
#include "config/PercentEscapes.h"

#include <fmt/format.h>

#include <algorithm>

namespace quillox {

namespace {

    bool isDigit(char c)
    {
        return c >= '0' && c <= '9';
    }
    bool isLetter(char c)
    {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    }

    bool isScheme(std::string_view text)
    {
        return !text.empty() && isLetter(text[0])
            && std::all_of(text.begin(), text.end(), [](char c) {
                   return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.';
               });
    }

    bool isPort(std::string_view text)
    {
        return !text.empty() && text.size() <= 5 && std::all_of(text.begin(), text.end(), isDigit)
            && (text.size() < 5 || text <= "65535");
    }

    /// The host in what stands between "//" and the path: empty text when there is nothing, none
    /// when it is malformed.
    std::optional<std::string> hostOfAuthority(std::string_view authority)
    {
        if (authority.empty())
            return std::string();
        if (authority.starts_with('[')) {
            const auto end = authority.find(']');
            if (end == std::string_view::npos || !isIPv6Address(authority.substr(1, end - 1)))
                return std::nullopt;
            const auto rest = authority.substr(end + 1);
            if (!rest.empty() && (rest[0] != ':' || !isPort(rest.substr(1))))
                return std::nullopt;
            return std::string(authority.substr(1, end - 1));
        }
        const auto colon = authority.find(':');
        const auto host = authority.substr(0, colon);
        if (!isHostName(host)
            || (colon != std::string_view::npos && !isPort(authority.substr(colon + 1))))
            return std::nullopt;
        return std::string(host);
    }

    std::string escapedPath(std::string_view path)
    {
        constexpr std::string_view kept = "/-._~!$&'()*+,=:@";
        std::string escaped;
        for (const char c : path) {
            if (isLetter(c) || isDigit(c) || kept.find(c) != std::string_view::npos)
                escaped += c;
            else
                escaped += fmt::format("%{:02X}", static_cast<unsigned char>(c));
        }
        return escaped;
    }

} // namespace

std::optional<Url> Url::parse(std::string_view text)
{
    const auto colon = text.find(':');
    if (colon == std::string_view::npos || !isScheme(text.substr(0, colon)) || !isVisibleText(text))
        return std::nullopt;
    Url url;
    url.m_text = text;
    url.m_scheme = text.substr(0, colon);
    auto rest = text.substr(colon + 1);
    rest = rest.substr(0, std::min(rest.find('?'), rest.find('#')));
    if (rest.find('\\') != std::string_view::npos)
        return std::nullopt;
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        const auto slash = std::min(rest.find('/'), rest.size());
        const auto host = hostOfAuthority(rest.substr(0, slash));
        if (!host)
            return std::nullopt;
        if (!host->empty())
            url.m_host = host;
        rest.remove_prefix(slash);
    }
    auto path = percentDecoded(rest);
    if (!path)
        return std::nullopt;
    url.m_path = std::move(*path);
    return url;
}

Url Url::fromComponents(std::string_view scheme, std::string_view host, std::string_view path)
{
    Url url;
    url.m_scheme = scheme;
    url.m_host = host;
    url.m_path = path;
    url.m_text = fmt::format("{}://{}{}", scheme, host, escapedPath(path));
    return url;
}

std::string Url::lowercaseScheme() const
{
    auto scheme = m_scheme;
    std::transform(scheme.begin(), scheme.end(), scheme.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return scheme;
}

} // namespace quillox
