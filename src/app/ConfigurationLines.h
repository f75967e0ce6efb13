#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillox {

// Of other programs' files, with "[section]" headings and "key = value" lines. Comments, order,
// line ends and all that is not named stay as they are.

struct ConfigurationLine {
    std::string_view key;
    /// The whole line, without its end.
    std::string text;
};

/// Makes each key of the section have this one line: in the place of the first that it has, and any
/// other goes; below the section's heading when it has none. A missing section comes at the end.
std::string withLines(
    std::string_view text, std::string_view section, const std::vector<ConfigurationLine>&);

/// Makes comments of the lines with these keys, in every section whose name begins so.
std::string withoutKeys(std::string_view text, std::string_view sectionStart,
    const std::vector<std::string_view>& keys);

/// The value of the last such line, without spaces around it; empty when there is none.
std::string_view valueOf(std::string_view text, std::string_view section, std::string_view key);

bool hasSection(std::string_view text, std::string_view section);

} // namespace quillox
