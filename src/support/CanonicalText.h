#pragma once

#include <string_view>

namespace quillox {

/// Whether two UTF-8 texts are the same characters, however each composes its accents. Texts that
/// are not UTF-8 are the same only byte by byte.
bool areCanonicallyEquivalent(std::string_view left, std::string_view right);

} // namespace quillox
