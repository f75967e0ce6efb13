#include "config/SettingsFields.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace quillox {

namespace {

    bool acceptsUrl(const KioskSettings& settings)
    {
        return settings.url == KioskSettings {}.url || settings.startURL();
    }

    bool acceptsLocalPath(const KioskSettings& settings)
    {
        return settings.localPath.empty() || settings.localPath.starts_with('/');
    }

    bool acceptsLocalEntry(const KioskSettings& settings)
    {
        const auto bracketed = "/" + settings.localEntry + "/";
        return !settings.localEntry.empty() && !settings.localEntry.starts_with('/')
            && bracketed.find("/../") == std::string::npos;
    }

    template <typename Cases> std::string oneOf(const Cases& cases)
    {
        std::vector<std::string_view> names;
        for (const auto value : cases)
            names.push_back(rawValue(value));
        return fmt::format("one of: {}", fmt::join(names, ", "));
    }

    struct TypeInWords {
        std::string operator()(bool KioskSettings::*) const { return "true or false"; }
        std::string operator()(std::int64_t KioskSettings::*) const { return "a whole number"; }
        std::string operator()(std::uint32_t KioskSettings::*) const
        {
            return "a whole number from 0 to 4294967295";
        }
        std::string operator()(std::string KioskSettings::*) const { return "text in UTF-8"; }
        std::string operator()(std::vector<std::string> KioskSettings::*) const
        {
            return "a list of texts in UTF-8";
        }
        std::string operator()(SourceKind KioskSettings::*) const { return oneOf(allSourceKinds); }
        std::string operator()(NavPosition KioskSettings::*) const
        {
            return oneOf(allNavPositions);
        }
        std::string operator()(NotchBarColor KioskSettings::*) const
        {
            return oneOf(allNotchBarColors);
        }
    };

    using Settings = KioskSettings;

} // namespace

constinit const std::array<SettingsField, 22> settingsFields { {
    { "url", &Settings::url, acceptsUrl,
        "an http or https address with a host, or https:// for none" },
    { "restrictToDomain", &Settings::restrictToDomain },
    { "restrictToPath", &Settings::restrictToPath },
    { "allowedDomains", &Settings::allowedDomains },
    { "scrollOnly", &Settings::scrollOnly },
    { "idleResetSeconds", &Settings::idleResetSeconds },
    { "exitPassword", &Settings::exitPassword },
    { "requireExitPassword", &Settings::requireExitPassword },
    { "keepAlive", &Settings::keepAlive },
    { "autoStartKiosk", &Settings::autoStartKiosk },
    { "displayID", &Settings::displayID },
    { "showBack", &Settings::showBack },
    { "showForward", &Settings::showForward },
    { "showRefresh", &Settings::showRefresh },
    { "showHome", &Settings::showHome },
    { "navPosition", &Settings::navPosition },
    { "avoidNotch", &Settings::avoidNotch },
    { "notchBarColor", &Settings::notchBarColor },
    { "sourceKind", &Settings::sourceKind },
    { "localPath", &Settings::localPath, acceptsLocalPath, "an absolute path, or empty" },
    { "localEntry", &Settings::localEntry, acceptsLocalEntry,
        "a file name or path inside the folder, without .." },
    { "autoUpdate", &Settings::autoUpdate },
} };

const SettingsField* settingsFieldNamed(std::string_view name)
{
    const auto found = std::find_if(settingsFields.begin(), settingsFields.end(),
        [name](const SettingsField& field) { return field.name == name; });
    return found == settingsFields.end() ? nullptr : &*found;
}

std::string validValues(const SettingsField& field)
{
    return field.accepted.empty() ? std::visit(TypeInWords {}, field.member)
                                  : std::string(field.accepted);
}

void resetField(const SettingsField& field, KioskSettings& settings)
{
    std::visit(
        [&settings](auto member) { settings.*member = KioskSettings {}.*member; }, field.member);
}

} // namespace quillox
