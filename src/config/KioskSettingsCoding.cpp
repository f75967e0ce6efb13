#include "config/KioskSettings.h"

#include "config/SettingsFields.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <limits>

namespace quillox {

namespace {

    using Json = nlohmann::ordered_json;

    bool read(const Json& json, bool& value)
    {
        if (!json.is_boolean())
            return false;
        value = json.get<bool>();
        return true;
    }

    bool read(const Json& json, std::string& value)
    {
        if (!json.is_string())
            return false;
        value = json.get<std::string>();
        return true;
    }

    template <typename Integer> bool readInteger(const Json& json, Integer& value)
    {
        using Limits = std::numeric_limits<Integer>;
        if (json.is_number_float()) {
            // The upper bound is a power of two and therefore exact, unlike the largest integer.
            const auto number = json.get<double>();
            const auto bound = std::ldexp(1.0, Limits::digits);
            if (std::trunc(number) != number || number >= bound
                || number < static_cast<double>(Limits::min()))
                return false;
            value = static_cast<Integer>(number);
            return true;
        }
        if (json.is_number_unsigned()) {
            if (!std::in_range<Integer>(json.get<std::uint64_t>()))
                return false;
        } else if (!json.is_number_integer() || !std::in_range<Integer>(json.get<std::int64_t>()))
            return false;
        value = json.get<Integer>();
        return true;
    }

    bool read(const Json& json, std::int64_t& value)
    {
        return readInteger(json, value);
    }
    bool read(const Json& json, std::uint32_t& value)
    {
        return readInteger(json, value);
    }

    bool read(const Json& json, std::vector<std::string>& value)
    {
        if (!json.is_array())
            return false;
        for (const auto& element : json) {
            if (!element.is_string())
                return false;
        }
        value = json.get<std::vector<std::string>>();
        return true;
    }

    template <typename Enumeration>
    bool readCase(const Json& json, Enumeration& value,
        std::optional<Enumeration> (*fromRawValue)(std::string_view))
    {
        if (!json.is_string())
            return false;
        const auto found = fromRawValue(json.get_ref<const std::string&>());
        if (found)
            value = *found;
        return found.has_value();
    }

    bool read(const Json& json, SourceKind& value)
    {
        return readCase(json, value, sourceKindFromRawValue);
    }

    bool read(const Json& json, NavPosition& value)
    {
        return readCase(json, value, navPositionFromRawValue);
    }

    bool read(const Json& json, NotchBarColor& value)
    {
        return readCase(json, value, notchBarColorFromRawValue);
    }

    bool readField(const SettingsField& field, const Json& json, KioskSettings& settings)
    {
        return std::visit([&](auto member) { return read(json, settings.*member); }, field.member);
    }

    Json fieldValue(const SettingsField& field, const KioskSettings& settings)
    {
        return std::visit(
            [&settings](auto member) -> Json {
                const auto& value = settings.*member;
                if constexpr (std::is_enum_v<std::remove_cvref_t<decltype(value)>>)
                    return rawValue(value);
                else
                    return value;
            },
            field.member);
    }

    std::optional<std::string> textOf(const Json& json)
    {
        try {
            return json.dump();
        } catch (const Json::type_error&) {
            return std::nullopt; // Text that is not UTF-8.
        }
    }

    Json parsed(std::string_view text)
    {
        return Json::parse(text, nullptr, false);
    }

} // namespace

std::optional<std::string> KioskSettings::encoded() const
{
    auto json = Json::object();
    for (const auto& field : settingsFields)
        json.emplace(field.name, fieldValue(field, *this));
    return textOf(json);
}

std::optional<KioskSettings> KioskSettings::decoded(std::string_view text)
{
    const auto json = parsed(text);
    if (!json.is_object())
        return std::nullopt;
    KioskSettings settings;
    for (const auto& field : settingsFields) {
        const auto stored = json.find(field.name);
        const auto isRead = stored != json.end() && readField(field, *stored, settings);
        // Records from before the switch existed go on asking for the password that they hold. The
        // password comes earlier in the table and is known by now.
        if (!isRead && field.name == "requireExitPassword")
            settings.requireExitPassword = !settings.exitPassword.empty();
    }
    return settings;
}

std::optional<std::string> encodedField(const SettingsField& field, const KioskSettings& settings)
{
    return textOf(fieldValue(field, settings));
}

bool decodeField(const SettingsField& field, std::string_view json, KioskSettings& settings)
{
    return readField(field, parsed(json), settings);
}

} // namespace quillox
