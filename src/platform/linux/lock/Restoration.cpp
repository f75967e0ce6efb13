#include "platform/linux/lock/Restoration.h"

#include <nlohmann/json.hpp>

namespace quillox {

namespace {

    using Json = nlohmann::ordered_json;

    Json jsonOf(const TakenSetting& setting)
    {
        return { { "number", setting.number }, { "schema", setting.schema }, { "key", setting.key },
            { "value", setting.value ? Json(*setting.value) : Json() } };
    }

    TakenSetting settingFrom(const Json& json)
    {
        TakenSetting setting { json.at("number").get<std::int32_t>(),
            json.at("schema").get<std::string>(), json.at("key").get<std::string>(), {} };
        if (const auto& value = json.at("value"); !value.is_null())
            setting.value = value.get<std::string>();
        return setting;
    }

    Json jsonOf(const TakenServerKeys::Keyboard& keyboard)
    {
        auto actions = Json::array();
        for (const auto& action : keyboard.actions)
            actions.push_back({ action.keyCode, action.index, action.action });
        return { { "id", keyboard.identifier }, { "name", keyboard.name },
            { "actions", std::move(actions) }, { "accessXKeys", keyboard.hadAccessXKeys } };
    }

    TakenServerKeys::Keyboard keyboardFrom(const Json& json)
    {
        TakenServerKeys::Keyboard keyboard { json.at("id").get<int>(),
            json.at("name").get<std::string>(), {}, json.at("accessXKeys").get<bool>() };
        for (const auto& action : json.at("actions")) {
            keyboard.actions.push_back({ action.at(0).get<int>(), action.at(1).get<int>(),
                action.at(2).get<std::array<std::uint8_t, 8>>() });
        }
        return keyboard;
    }

    Restoration restorationFrom(const Json& json)
    {
        Restoration restoration;
        for (const auto& setting : json.at("settings"))
            restoration.settings.push_back(settingFrom(setting));
        restoration.server = json.at("server").get<std::string>();
        if (const auto& keys = json.at("serverKeys"); !keys.is_null()) {
            auto& taken = restoration.serverKeys.emplace();
            for (const auto& keyboard : keys)
                taken.keyboards.push_back(keyboardFrom(keyboard));
        }
        restoration.hasBlockedGlobalShortcuts = json.at("globalShortcutsBlocked").get<bool>();
        restoration.hasDisabledDisplayPowerSaving = json.at("powerSavingDisabled").get<bool>();
        return restoration;
    }

} // namespace

bool hasToPutBack(const Restoration& restoration)
{
    return !restoration.settings.empty() || restoration.serverKeys
        || restoration.hasBlockedGlobalShortcuts || restoration.hasDisabledDisplayPowerSaving;
}

std::string restorationText(const Restoration& restoration)
{
    auto settings = Json::array();
    for (const auto& setting : restoration.settings)
        settings.push_back(jsonOf(setting));
    Json serverKeys;
    if (restoration.serverKeys) {
        serverKeys = Json::array();
        for (const auto& keyboard : restoration.serverKeys->keyboards)
            serverKeys.push_back(jsonOf(keyboard));
    }
    const Json document { { "settings", std::move(settings) }, { "server", restoration.server },
        { "serverKeys", std::move(serverKeys) },
        { "globalShortcutsBlocked", restoration.hasBlockedGlobalShortcuts },
        { "powerSavingDisabled", restoration.hasDisabledDisplayPowerSaving } };
    // Names of devices need not be UTF-8.
    return document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<Restoration> parseRestoration(std::string_view text)
{
    const auto json = Json::parse(text, nullptr, false);
    if (json.is_discarded())
        return std::nullopt;
    try {
        return restorationFrom(json);
    } catch (const Json::exception&) {
        return std::nullopt; // Something is missing, or of another type.
    }
}

} // namespace quillox
