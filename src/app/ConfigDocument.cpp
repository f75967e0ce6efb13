#include "app/ConfigDocument.h"

#include "config/DefaultsKeys.h"
#include "config/SettingsFields.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <numeric>

namespace quillox {

namespace {

    using Json = nlohmann::ordered_json;

    constexpr std::string_view passwordKey = "exitPassword";

    /// Discarded when the text is not JSON, or nested deeper than any value of ours: handling such
    /// values goes down the stack with them.
    Json parsed(std::string_view text)
    {
        constexpr int deepestNesting = 16;
        bool isTooDeep = false;
        const auto isAcceptable = [&isTooDeep](int depth, Json::parse_event_t, const Json&) {
            isTooDeep = isTooDeep || depth > deepestNesting;
            return !isTooDeep;
        };
        auto json = Json::parse(text, isAcceptable, false);
        if (isTooDeep)
            return Json(Json::value_t::discarded);
        return json;
    }

    std::string textOf(const Json& json)
    {
        return json.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    /// How many letters one must change, insert or remove to get from one word to the other.
    std::size_t distance(std::string_view from, std::string_view to)
    {
        std::vector<std::size_t> row(to.size() + 1);
        std::iota(row.begin(), row.end(), std::size_t { 0 });
        for (std::size_t i = 0; i < from.size(); ++i) {
            auto diagonal = row[0];
            row[0] = i + 1;
            for (std::size_t j = 0; j < to.size(); ++j) {
                const auto changed = diagonal + (from[i] == to[j] ? 0 : 1);
                diagonal = row[j + 1];
                row[j + 1] = std::min({ changed, row[j] + 1, row[j + 1] + 1 });
            }
        }
        return row.back();
    }

    std::string lowercase(std::string_view text)
    {
        std::string result(text);
        std::transform(result.begin(), result.end(), result.begin(),
            [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
        return result;
    }

    std::string validValuesOf(std::string_view key)
    {
        const auto* field = settingsFieldNamed(key);
        return field ? validValues(*field) : "true or false";
    }

    /// The password is not repeated: terminals and logs are read by others.
    std::string objectionToValue(std::string_view key, const Json& value)
    {
        constexpr std::size_t longestEcho = 60;
        auto echo = textOf(value);
        if (key == passwordKey || echo.size() > longestEcho)
            echo = "the value";
        return fmt::format("{} is not valid; it must be {}", echo, validValuesOf(key));
    }

    bool setJson(Configuration& configuration, std::string_view key, const Json& value)
    {
        const auto* field = settingsFieldNamed(key);
        if (!field) {
            if (!value.is_boolean())
                return false;
            configuration.hasOnboarded = value.get<bool>();
            configuration.isHasOnboardedNamed = true;
            return true;
        }
        auto settings = configuration.settings;
        // Replaced characters would change the value, so that it is refused where they occur.
        const auto json = textOf(value);
        if (parsed(json) != value || !decodeField(*field, json, settings)
            || (field->accepts && !field->accepts(settings)))
            return false;
        configuration.settings = std::move(settings);
        configuration.isSettingsNamed = true;
        return true;
    }

    Json listFromText(std::string_view text)
    {
        if (text.starts_with('['))
            return parsed(text);
        auto list = Json::array();
        while (!text.empty()) {
            const auto end = std::min(text.find(','), text.size());
            auto item = text.substr(0, end);
            item.remove_prefix(std::min(item.find_first_not_of(" \t"), item.size()));
            item = item.substr(0, item.find_last_not_of(" \t") + 1);
            if (!item.empty())
                list.push_back(item);
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return list;
    }

    template <typename Integer> Json integerFromText(const std::string& text)
    {
        Integer value {};
        const auto* end = text.data() + text.size();
        const auto [last, error] = std::from_chars(text.data(), end, value);
        return error == std::errc() && last == end ? Json(value) : Json(text);
    }

    Json booleanFromText(const std::string& text)
    {
        return text == "true" || text == "false" ? Json(text == "true") : Json(text);
    }

    /// What was typed, as JSON of the key's type where it can be read as that.
    struct TypedValue {
        const std::string& text;

        Json operator()(bool KioskSettings::*) const { return booleanFromText(text); }
        Json operator()(std::int64_t KioskSettings::*) const
        {
            return integerFromText<std::int64_t>(text);
        }
        Json operator()(std::uint32_t KioskSettings::*) const
        {
            return integerFromText<std::uint32_t>(text);
        }
        Json operator()(std::vector<std::string> KioskSettings::*) const
        {
            const auto list = listFromText(text);
            return list.is_discarded() ? Json(text) : list;
        }
        template <typename Text> Json operator()(Text KioskSettings::*) const { return text; }
    };

    Objection importRecord(Configuration& configuration, const Json& record)
    {
        for (const auto& [key, value] : record.items()) {
            const auto place = fmt::format("{}.", kioskSettingsKey);
            if (!settingsFieldNamed(key))
                return place + objectionToKey(key).value_or(key + ": not part of this object");
            if (!setJson(configuration, key, value))
                return fmt::format("{}{}: {}", place, key, objectionToValue(key, value));
        }
        return std::nullopt;
    }

    Objection importEntry(Configuration& configuration, const std::string& key, const Json& value)
    {
        if (key == kioskSettingsKey) {
            return value.is_object() ? importRecord(configuration, value)
                                     : fmt::format("{}: it must be an object", key);
        }
        if (auto objection = objectionToKey(key))
            return objection;
        if (!setJson(configuration, key, value))
            return fmt::format("{}: {}", key, objectionToValue(key, value));
        return std::nullopt;
    }

    /// Why the text is not JSON: the parser's own words without its tag.
    std::string syntaxError(std::string_view json)
    {
        try {
            [[maybe_unused]] const auto value = Json::parse(json);
        } catch (const Json::parse_error& error) {
            const std::string_view words = error.what();
            return std::string(words.substr(words.find("] ") + 2));
        }
        return "nested too deep";
    }

} // namespace

std::string quoted(std::string_view text)
{
    return textOf(Json(text));
}

std::vector<std::string_view> configurationKeys()
{
    std::vector<std::string_view> keys;
    for (const auto& field : settingsFields)
        keys.push_back(field.name);
    keys.push_back(hasOnboardedKey);
    return keys;
}

Objection objectionToKey(std::string_view key)
{
    const auto keys = configurationKeys();
    if (std::find(keys.begin(), keys.end(), key) != keys.end())
        return std::nullopt;
    constexpr std::size_t farthest = 3;
    const auto wanted = lowercase(key.substr(0, 64));
    const auto closest = std::min_element(keys.begin(), keys.end(), [&](auto left, auto right) {
        return distance(wanted, lowercase(left)) < distance(wanted, lowercase(right));
    });
    if (distance(wanted, lowercase(*closest)) <= std::min(farthest, (closest->size() + 1) / 2))
        return fmt::format("{}: no such key; did you mean {}?", quoted(key), *closest);
    return fmt::format("{}: no such key; the keys are: {}", quoted(key), fmt::join(keys, ", "));
}

std::string configurationValue(const Configuration& configuration, std::string_view key)
{
    const auto* field = settingsFieldNamed(key);
    if (!field)
        return configuration.hasOnboarded ? "true" : "false";
    return encodedField(*field, configuration.settings).value_or("null");
}

std::string configurationText(const Configuration& configuration, std::string_view key)
{
    const auto value = configurationValue(configuration, key);
    const auto json = Json::parse(value);
    return json.is_string() ? json.get<std::string>() : value;
}

Objection setConfigurationText(
    Configuration& configuration, std::string_view key, const std::string& text)
{
    const auto* field = settingsFieldNamed(key);
    const auto value
        = field ? std::visit(TypedValue { text }, field->member) : booleanFromText(text);
    if (setJson(configuration, key, value))
        return std::nullopt;
    return fmt::format("{}: {}", key, objectionToValue(key, Json(text)));
}

void resetConfigurationKey(Configuration& configuration, std::string_view key)
{
    if (const auto* field = settingsFieldNamed(key)) {
        resetField(*field, configuration.settings);
        configuration.isSettingsNamed = true;
    } else {
        configuration.hasOnboarded = false;
        configuration.isHasOnboardedNamed = true;
    }
}

std::string exportedConfiguration(const Configuration& configuration, bool withPassword)
{
    auto record = Json::parse(configuration.settings.encoded().value_or("{}"));
    if (!withPassword)
        record.erase(passwordKey);
    auto document = Json::object();
    document.emplace(hasOnboardedKey, configuration.hasOnboarded);
    document.emplace(kioskSettingsKey, std::move(record));
    return document.dump(2) + "\n";
}

Objection importConfiguration(Configuration& configuration, std::string_view json)
{
    const auto document = parsed(json);
    if (document.is_discarded())
        return syntaxError(json);
    if (!document.is_object())
        return "it must hold a JSON object";
    auto imported = configuration;
    for (const auto& [key, value] : document.items()) {
        if (auto objection = importEntry(imported, key, value))
            return objection;
    }
    configuration = std::move(imported);
    return std::nullopt;
}

} // namespace quillox
