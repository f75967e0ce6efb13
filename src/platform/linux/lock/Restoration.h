#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

/// A desktop's setting before it was changed.
struct TakenSetting {
    std::int32_t number = 0; ///< The symbolic hot key that it belongs to.
    std::string schema;
    std::string key;
    std::optional<std::string> value; ///< GVariant text; none when the user had set no value.

    bool operator==(const TakenSetting&) const = default;
};

/// What an X server did by itself at keys before that was taken away.
struct TakenServerKeys {
    struct Action {
        int keyCode = 0;
        int index = 0; ///< Among the key's symbols.
        std::array<std::uint8_t, 8> action {}; ///< As the server's protocol has it.

        bool operator==(const Action&) const = default;
    };

    struct Keyboard {
        int identifier = 0;
        std::string name;
        std::vector<Action> actions;
        bool hadAccessXKeys = false; ///< Whether keys could turn accessibility features on.

        bool operator==(const Keyboard&) const = default;
    };

    std::vector<Keyboard> keyboards;

    bool operator==(const TakenServerKeys&) const = default;
};

/// Everything that is changed outside of this process and outlives it, as it was.
struct Restoration {
    std::vector<TakenSetting> settings;
    /// The mark of the X server's run that the rest of its state was taken from.
    std::string server;
    std::optional<TakenServerKeys> serverKeys;
    bool hasBlockedGlobalShortcuts = false;
    bool hasDisabledDisplayPowerSaving = false;

    bool operator==(const Restoration&) const = default;
};

/// Whether anything is changed.
bool hasToPutBack(const Restoration&);

std::string restorationText(const Restoration&);

/// None when `text` is not what `restorationText` makes.
std::optional<Restoration> parseRestoration(std::string_view text);

} // namespace quillox
