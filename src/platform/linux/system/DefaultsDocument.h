#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillox {

/// `text` as compact JSON; none when it is not one JSON value, or nested so deep that handling it
/// would not be safe.
std::optional<std::string> compactJson(std::string_view text);

/// The contents of a defaults file: a JSON object whose keys keep their order.
class DefaultsDocument {
public:
    /// None when `text` is not a JSON object; `reason` then says why.
    static std::optional<DefaultsDocument> parse(std::string_view text, std::string& reason);

    /// As compact JSON text.
    std::optional<std::string> value(std::string_view key) const;

    /// Replaces the value in its place, or appends the key. `json` is one JSON value.
    void setValue(std::string_view key, std::string json);

    /// The whole document, indented for people.
    std::string text() const;

private:
    std::vector<std::pair<std::string, std::string>> m_values;
};

} // namespace quillox
