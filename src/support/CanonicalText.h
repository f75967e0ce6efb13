#pragma once

#include <string>
#include <string_view>

namespace quillox {

/// Whether two UTF-8 texts are the same characters, however each composes its accents. Texts that
/// are not UTF-8 are the same only byte by byte.
bool areCanonicallyEquivalent(std::string_view left, std::string_view right);

/// Every character in lower case, whatever its script. Bytes that are not UTF-8 stay as they are.
std::string lowercased(std::string_view text);

} // namespace quillox
