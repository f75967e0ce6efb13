#include "resilience/update/UpdateSource.h"

#include "config/Url.h"
#include "resilience/update/Hexadecimal.h"

#include <map>

namespace quillox {

namespace {

    using Properties = std::map<std::string, std::string, std::less<>>;

    constexpr std::size_t publicKeyBytes = 32;

    std::optional<Properties> readLines(std::string_view text)
    {
        Properties properties;
        while (!text.empty()) {
            const auto line = text.substr(0, text.find('\n'));
            text.remove_prefix(std::min(line.size() + 1, text.size()));
            if (line.empty() || line[0] == '#')
                continue;
            const auto sign = line.find('=');
            if (sign == std::string_view::npos
                || !properties.emplace(line.substr(0, sign), line.substr(sign + 1)).second)
                return std::nullopt;
        }
        return properties;
    }

    bool isTrusted(const Url& url, bool mayBeLoopback)
    {
        const auto scheme = url.lowercaseScheme();
        const auto& host = url.host();
        // What follows a question mark would end up in the middle of the archives' addresses.
        if (!host || url.text().find_first_of("?#") != std::string::npos)
            return false;
        const bool isLoopback = host == "127.0.0.1" || host == "::1";
        return scheme == "https" || (scheme == "http" && isLoopback && mayBeLoopback);
    }

} // namespace

std::optional<UpdateSource> UpdateSource::parse(std::string_view properties)
{
    auto lines = readLines(properties);
    if (!lines)
        return std::nullopt;
    const auto take = [&](std::string_view key) {
        const auto entry = lines->find(key);
        return entry != lines->end() ? lines->extract(entry).mapped() : std::string();
    };
    const auto url = Url::parse(take("feed"));
    auto key = bytesFromHexadecimal(take("publicKey"), publicKeyBytes);
    const auto mayBeLoopback = take("allowLoopback");
    if (!lines->empty() || !url || !key || (!mayBeLoopback.empty() && mayBeLoopback != "true")
        || !isTrusted(*url, !mayBeLoopback.empty()))
        return std::nullopt;
    return UpdateSource { url->text(), std::move(*key) };
}

std::string UpdateSource::addressOf(std::string_view name) const
{
    return feed.substr(0, feed.rfind('/') + 1).append(name);
}

} // namespace quillox
