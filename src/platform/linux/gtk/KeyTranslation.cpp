#include "platform/linux/gtk/KeyTranslation.h"

#include <algorithm>
#include <array>
#include <linux/input-event-codes.h>
#include <utility>

namespace quillox {

namespace {

    constexpr std::array keyCodes = std::to_array<std::pair<unsigned, KeyCode>>({
        { KEY_A, 0 },
        { KEY_S, keys::s },
        { KEY_D, 2 },
        { KEY_F, 3 },
        { KEY_H, 4 },
        { KEY_G, 5 },
        { KEY_Z, 6 },
        { KEY_X, 7 },
        { KEY_C, 8 },
        { KEY_V, 9 },
        { KEY_102ND, 10 },
        { KEY_B, 11 },
        { KEY_Q, 12 },
        { KEY_W, 13 },
        { KEY_E, 14 },
        { KEY_R, 15 },
        { KEY_Y, 16 },
        { KEY_T, 17 },
        { KEY_1, 18 },
        { KEY_2, 19 },
        { KEY_3, 20 },
        { KEY_4, 21 },
        { KEY_6, 22 },
        { KEY_5, 23 },
        { KEY_EQUAL, 24 },
        { KEY_9, 25 },
        { KEY_7, 26 },
        { KEY_MINUS, 27 },
        { KEY_8, 28 },
        { KEY_0, 29 },
        { KEY_RIGHTBRACE, 30 },
        { KEY_O, 31 },
        { KEY_U, 32 },
        { KEY_LEFTBRACE, 33 },
        { KEY_I, 34 },
        { KEY_P, 35 },
        { KEY_ENTER, keys::returnKey },
        { KEY_L, 37 },
        { KEY_J, 38 },
        { KEY_APOSTROPHE, 39 },
        { KEY_K, 40 },
        { KEY_SEMICOLON, 41 },
        { KEY_BACKSLASH, 42 },
        { KEY_COMMA, 43 },
        { KEY_SLASH, 44 },
        { KEY_N, 45 },
        { KEY_M, 46 },
        { KEY_DOT, 47 },
        { KEY_TAB, 48 },
        { KEY_SPACE, 49 },
        { KEY_GRAVE, 50 },
        { KEY_BACKSPACE, 51 },
        { KEY_ESC, keys::escape },
        { KEY_RIGHTMETA, 54 },
        { KEY_LEFTMETA, 55 },
        { KEY_LEFTSHIFT, 56 },
        { KEY_CAPSLOCK, 57 },
        { KEY_LEFTALT, 58 },
        { KEY_LEFTCTRL, 59 },
        { KEY_RIGHTSHIFT, 60 },
        { KEY_RIGHTALT, 61 },
        { KEY_RIGHTCTRL, 62 },
        { KEY_F5, 96 },
        { KEY_F6, 97 },
        { KEY_F7, keys::f7 },
        { KEY_F3, 99 },
        { KEY_F8, 100 },
        { KEY_F9, 101 },
        { KEY_F11, keys::f11 },
        { KEY_F10, keys::f10 },
        { KEY_F12, keys::f12 },
        { KEY_HOME, 115 },
        { KEY_PAGEUP, 116 },
        { KEY_DELETE, 117 },
        { KEY_F4, 118 },
        { KEY_END, 119 },
        { KEY_F2, 120 },
        { KEY_PAGEDOWN, 121 },
        { KEY_F1, 122 },
        { KEY_LEFT, 123 },
        { KEY_RIGHT, 124 },
        { KEY_DOWN, 125 },
        { KEY_UP, 126 },
    });

    constexpr std::array keyCodesBySymbol = std::to_array<std::pair<unsigned, KeyCode>>({
        { GDK_KEY_F7, keys::f7 },
        { GDK_KEY_F10, keys::f10 },
        { GDK_KEY_F11, keys::f11 },
        { GDK_KEY_F12, keys::f12 },
        { GDK_KEY_Menu, keys::menu },
        { GDK_KEY_Print, keys::print },
        { GDK_KEY_Sys_Req, keys::print },
    });

    /// What X and Wayland add to the kernel's code.
    constexpr unsigned keycodeOffset = 8;

} // namespace

KeyCode keyCodeFor(unsigned hardwareKeycode)
{
    const auto found = std::ranges::find(
        keyCodes, hardwareKeycode - keycodeOffset, &std::pair<unsigned, KeyCode>::first);
    return found == keyCodes.end() ? keys::unknown : found->second;
}

KeyCode keyCodeFor(unsigned hardwareKeycode, unsigned keySymbol)
{
    const auto found
        = std::ranges::find(keyCodesBySymbol, keySymbol, &std::pair<unsigned, KeyCode>::first);
    return found == keyCodesBySymbol.end() ? keyCodeFor(hardwareKeycode) : found->second;
}

std::optional<unsigned> hardwareKeyFor(KeyCode key)
{
    const auto found = std::ranges::find(keyCodes, key, &std::pair<unsigned, KeyCode>::second);
    return found == keyCodes.end() ? std::nullopt : std::optional(found->first + keycodeOffset);
}

bool isAuxiliaryControl(unsigned keySymbol)
{
    // The range that X sets aside for the keys of keyboard makers.
    return keySymbol >= 0x1008FE00 && keySymbol <= 0x1008FFFF;
}

ModifierFlags modifierFor(unsigned keySymbol)
{
    switch (keySymbol) {
    case GDK_KEY_Super_L:
    case GDK_KEY_Super_R:
        return ModifierFlags::Command;
    case GDK_KEY_Shift_L:
    case GDK_KEY_Shift_R:
        return ModifierFlags::Shift;
    case GDK_KEY_Control_L:
    case GDK_KEY_Control_R:
        return ModifierFlags::Control;
    case GDK_KEY_Alt_L:
    case GDK_KEY_Alt_R:
    case GDK_KEY_Meta_L: // What Shift makes of Alt.
    case GDK_KEY_Meta_R:
        return ModifierFlags::Option;
    case GDK_KEY_Caps_Lock:
        return ModifierFlags::CapsLock;
    default:
        return ModifierFlags::None;
    }
}

ModifierFlags flagsFor(GdkModifierType state)
{
    auto flags = ModifierFlags::None;
    for (const auto& [mask, flag] : {
             std::pair(GDK_SHIFT_MASK, ModifierFlags::Shift),
             std::pair(GDK_LOCK_MASK, ModifierFlags::CapsLock),
             std::pair(GDK_CONTROL_MASK, ModifierFlags::Control),
             std::pair(GDK_ALT_MASK, ModifierFlags::Option),
             std::pair(GDK_SUPER_MASK, ModifierFlags::Command),
         }) {
        if (state & mask)
            flags = flags | flag;
    }
    return flags;
}

} // namespace quillox
