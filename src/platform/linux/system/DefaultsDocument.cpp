#include "platform/linux/system/DefaultsDocument.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quillox {

namespace {

    using Json = nlohmann::ordered_json;

    /// The parser copes with any depth, but writing a value goes down the stack with it.
    constexpr int deepestNesting = 100;

    /// Discarded when the text is not JSON or is nested too deep.
    Json parsed(std::string_view text)
    {
        bool isTooDeep = false;
        auto json = Json::parse(
            text,
            [&isTooDeep](int depth, Json::parse_event_t, const Json&) {
                isTooDeep = isTooDeep || depth > deepestNesting;
                return !isTooDeep;
            },
            false);
        if (isTooDeep)
            return Json(Json::value_t::discarded);
        return json;
    }

} // namespace

std::optional<std::string> compactJson(std::string_view text)
{
    const auto json = parsed(text);
    if (json.is_discarded())
        return std::nullopt;
    return json.dump();
}

std::optional<DefaultsDocument> DefaultsDocument::parse(std::string_view text, std::string& reason)
{
    const auto json = parsed(text);
    if (!json.is_object()) {
        reason = json.is_discarded() ? "it is not JSON" : "it is not a JSON object";
        return std::nullopt;
    }
    DefaultsDocument document;
    for (const auto& [key, value] : json.items())
        document.m_values.emplace_back(key, value.dump());
    return document;
}

std::optional<std::string> DefaultsDocument::value(std::string_view key) const
{
    for (const auto& [name, json] : m_values) {
        if (name == key)
            return json;
    }
    return std::nullopt;
}

void DefaultsDocument::setValue(std::string_view key, std::string json)
{
    const auto found = std::find_if(
        m_values.begin(), m_values.end(), [key](const auto& entry) { return entry.first == key; });
    if (found == m_values.end())
        m_values.emplace_back(key, std::move(json));
    else
        found->second = std::move(json);
}

std::string DefaultsDocument::text() const
{
    auto document = Json::object();
    for (const auto& [key, json] : m_values)
        document.emplace(key, Json::parse(json));
    return document.dump(2) + "\n";
}

} // namespace quillox
