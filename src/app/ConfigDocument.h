#pragma once

#include "config/KioskSettings.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

/// `text` in quotation marks, on one line whatever it holds.
std::string quoted(std::string_view text);

/// Everything that the command line configures: the settings record and the switch that says
/// whether the first-run screens are done.
struct Configuration {
    KioskSettings settings;
    bool hasOnboarded = false;
    /// Whether what follows named a field of the record, or the switch, even with its old value.
    bool isSettingsNamed = false;
    bool isHasOnboardedNamed = false;
};

/// What is wrong with a key or value, in one line that says what would be valid; none when all is
/// well.
using Objection = std::optional<std::string>;

/// The fields of the record in their order, then `hasOnboarded`.
std::vector<std::string_view> configurationKeys();

/// For a key that does not exist: a suggestion, or the list.
Objection objectionToKey(std::string_view key);

/// The value of an existing key as JSON text.
std::string configurationValue(const Configuration&, std::string_view key);

/// The value of an existing key as `setConfigurationText` takes it.
std::string configurationText(const Configuration&, std::string_view key);

/// Sets an existing key from a value as typed: texts verbatim, lists as a JSON array or with
/// commas. An objection leaves everything as it was.
Objection setConfigurationText(Configuration&, std::string_view key, const std::string& text);

/// Gives an existing key its default.
void resetConfigurationKey(Configuration&, std::string_view key);

/// The configuration in the form of a defaults file, indented; without the password when it is not
/// asked for.
std::string exportedConfiguration(const Configuration&, bool withPassword);

/// Takes over what a document in the form of a defaults file, or the settings record alone, holds;
/// keys that it lacks keep their value. Strict: an objection, which names the place, leaves
/// everything as it was.
Objection importConfiguration(Configuration&, std::string_view json);

} // namespace quillox
