#pragma once

#include <string_view>

namespace quillox {

/// Whether `text` is a host name or a dotted IPv4 address that every parser reads alike. Letters
/// beyond ASCII pass; percent escapes, characters that name resolution would turn into others, and
/// numbers that only some read as an address ("127.1") do not.
bool isHostName(std::string_view text);

/// Whether `text` is an IPv6 address, without brackets and without a zone.
bool isIPv6Address(std::string_view text);

/// Whether the host name or address in `text` is this machine itself, without asking anybody.
bool isLoopbackHost(std::string_view text);

/// Whether `text` is UTF-8 without white space, control and invisible formatting characters.
bool isVisibleText(std::string_view text);

} // namespace quillox
