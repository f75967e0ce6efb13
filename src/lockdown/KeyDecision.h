#pragma once

#include "ports/EventMonitors.h"

namespace quillox {

/// The keys of the gesture that seals and unseals, beside S.
constexpr auto sealModifiers = ModifierFlags::Command | ModifierFlags::Shift;

/// A key pressed with one of these is a shortcut.
constexpr auto shortcutModifiers = ModifierFlags::Command | ModifierFlags::Control;

/// What a sealed run does about one event of the keyboard.
struct KeyDecision {
    enum class Action {
        None,
        ReenableTap,
        BeginHold, ///< If S has been up since the last hold began.
        CancelHold,
        ArmAndCancelHold, ///< From now on S may begin a hold again.
    };

    Action action = Action::None;
    EventMonitors::Verdict verdict = EventMonitors::Verdict::Pass;

    bool operator==(const KeyDecision&) const = default;
};

/// `isSDown` is whether the keyboard itself reports S as down; only the release of S asks for it.
KeyDecision decideKey(const Event&, bool isSDown);

/// Keys by which toolkits and engines open something of their own, or break: F7, F10, F11, F12,
/// Menu and Print. No page gets them.
bool isKeptFromPages(KeyCode);

} // namespace quillox
