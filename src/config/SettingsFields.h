#pragma once

#include "config/KioskSettings.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quillox {

/// One field of the settings record: its JSON key, its place in the struct, and what an operator
/// may put there.
struct SettingsField {
    using Member = std::variant<bool KioskSettings::*, std::int64_t KioskSettings::*,
        std::uint32_t KioskSettings::*, std::string KioskSettings::*,
        std::vector<std::string> KioskSettings::*, SourceKind KioskSettings::*,
        NavPosition KioskSettings::*, NotchBarColor KioskSettings::*>;

    std::string_view name;
    Member member;
    /// What a value must be beyond its type, and the words for it; absent where the type says all.
    /// Stored records are not held to it, only what comes in by the command line.
    bool (*accepts)(const KioskSettings&) = nullptr;
    std::string_view accepted = {};
};

/// Every field, in declaration order. A new one needs a row here and a member, nothing else.
extern const std::array<SettingsField, 22> settingsFields;

/// Null when there is none of that name.
const SettingsField* settingsFieldNamed(std::string_view name);

/// The values that the field takes, in words that follow "must be".
std::string validValues(const SettingsField&);

/// Gives the field its default.
void resetField(const SettingsField&, KioskSettings&);

/// The field's value as JSON text; none when it is text that is not UTF-8.
std::optional<std::string> encodedField(const SettingsField&, const KioskSettings&);

/// Takes the field's value from JSON text. False, changing nothing, when that is no value of the
/// field's type: an integer may be written as an integral float, but never as a boolean; one
/// element that is no string spoils the array.
bool decodeField(const SettingsField&, std::string_view json, KioskSettings&);

} // namespace quillox
