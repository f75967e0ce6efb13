#include "lockdown/KeyDecision.h"

#include <algorithm>
#include <array>
#include <optional>

namespace quillox {

namespace {

    using Action = KeyDecision::Action;
    using enum EventMonitors::Verdict;

    enum class Modifiers { Any, Seal, Shortcut };

    /// What an event must be like for a row to hold; what is not given may be anything.
    struct Row {
        std::optional<EventType> type {};
        std::optional<KeyCode> key {};
        Modifiers modifiers = Modifiers::Any;
        std::optional<bool> isSDown {};
        std::optional<std::int16_t> subtype {};
        KeyDecision decision {};
    };

    /// The first row that holds decides.
    constexpr std::array rows {
        Row { .type = EventType::TapDisabledByTimeout, .decision = { Action::ReenableTap, Pass } },
        Row {
            .type = EventType::TapDisabledByUserInput, .decision = { Action::ReenableTap, Pass } },
        Row { .type = EventType::SystemDefined,
            .subtype = auxiliaryControlButtons,
            .decision = { Action::None, Swallow } },
        Row { .type = EventType::KeyDown,
            .key = keys::s,
            .modifiers = Modifiers::Seal,
            .decision = { Action::BeginHold, Swallow } },
        Row { .type = EventType::KeyDown,
            .modifiers = Modifiers::Shortcut,
            .decision = { Action::None, Swallow } },
        Row { .type = EventType::KeyUp,
            .key = keys::s,
            .isSDown = true,
            .decision = { Action::CancelHold, Pass } },
        Row { .type = EventType::KeyUp,
            .key = keys::s,
            .decision = { Action::ArmAndCancelHold, Pass } },
        Row { .type = EventType::FlagsChanged,
            .modifiers = Modifiers::Seal,
            .decision = { Action::None, Pass } },
        Row { .type = EventType::FlagsChanged, .decision = { Action::CancelHold, Pass } },
        Row { .decision = { Action::None, Pass } },
    };

    bool holds(Modifiers wanted, ModifierFlags flags)
    {
        switch (wanted) {
        case Modifiers::Any:
            return true;
        case Modifiers::Seal:
            return containsAll(flags, sealModifiers);
        case Modifiers::Shortcut:
            return containsAny(flags, shortcutModifiers);
        }
        return false;
    }

} // namespace

bool isKeptFromPages(KeyCode key)
{
    constexpr std::array kept { keys::f7, keys::f10, keys::f11, keys::f12, keys::menu,
        keys::print };
    return std::ranges::find(kept, key) != kept.end();
}

KeyDecision decideKey(const Event& event, bool isSDown)
{
    const auto row = std::ranges::find_if(rows, [&](const Row& candidate) {
        return candidate.type.value_or(event.type) == event.type
            && candidate.key.value_or(event.keyCode) == event.keyCode
            && candidate.isSDown.value_or(isSDown) == isSDown
            && candidate.subtype.value_or(event.subtype) == event.subtype
            && holds(candidate.modifiers, event.flags);
    });
    return row->decision;
}

} // namespace quillox
