#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// An absolute address. What two parsers could read in two ways is refused: white space and control
/// characters anywhere; in front of the query also backslashes, a user name before the host, broken
/// or zero percent escapes, brackets around anything but an IPv6 address, numbers for a host that
/// are no plain IPv4 address, a colon without a port from 0 to 65535. The query and the fragment
/// decide nothing and are taken as they are.
class Url {
public:
    /// None when `text` is not an address that has one reading. Nothing is trimmed and no scheme is
    /// supplied.
    static std::optional<Url> parse(std::string_view text);

    /// An address from a scheme, a host and a path that is not yet escaped; the path begins with
    /// "/". What a path may not hold literally, and ";", is escaped; "/" is kept.
    static Url fromComponents(
        std::string_view scheme, std::string_view host, std::string_view path);

    /// As written; never empty.
    const std::string& scheme() const { return m_scheme; }
    std::string lowercaseScheme() const;

    /// As written, without the brackets of an IPv6 address; none when the address has no host or an
    /// empty one.
    const std::optional<std::string>& host() const { return m_host; }

    /// Percent-decoded; empty when the address has none. Escapes may make it bytes that are not
    /// UTF-8.
    const std::string& path() const { return m_path; }

    /// The whole address as it was parsed.
    const std::string& text() const { return m_text; }

    bool operator==(const Url& other) const { return m_text == other.m_text; }

private:
    Url() = default;

    std::string m_text;
    std::string m_scheme;
    std::optional<std::string> m_host;
    std::string m_path;
};

} // namespace quillox
