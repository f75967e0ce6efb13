#pragma once

#include <cstdint>

namespace quillox {

/// The kinds of input that the application is given. The values are bit positions of an
/// `EventMask`, but for the last two, which come whatever the mask.
enum class EventType : std::uint32_t {
    LeftMouseDown = 1,
    LeftMouseUp = 2,
    RightMouseDown = 3,
    RightMouseUp = 4,
    MouseMoved = 5,
    LeftMouseDragged = 6,
    RightMouseDragged = 7,
    KeyDown = 10,
    KeyUp = 11,
    FlagsChanged = 12,
    SystemDefined = 14,
    ScrollWheel = 22,
    OtherMouseDown = 25,
    OtherMouseUp = 26,
    OtherMouseDragged = 27,
    /// An event tap was switched off: it took too long, or another program's input took over.
    TapDisabledByTimeout = 0xFFFFFFFE,
    TapDisabledByUserInput = 0xFFFFFFFF,
};

using EventMask = std::uint32_t;

constexpr EventMask maskOf(EventType type)
{
    return EventMask { 1 } << static_cast<unsigned>(type);
}

/// Modifier keys that were down when an event happened.
enum class ModifierFlags : std::uint32_t {
    None = 0,
    CapsLock = 0x10000,
    Shift = 0x20000,
    Control = 0x40000,
    Option = 0x80000,
    Command = 0x100000,
};

constexpr ModifierFlags operator|(ModifierFlags left, ModifierFlags right)
{
    return static_cast<ModifierFlags>(
        static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
}

constexpr bool containsAll(ModifierFlags flags, ModifierFlags wanted)
{
    return (static_cast<std::uint32_t>(flags) & static_cast<std::uint32_t>(wanted))
        == static_cast<std::uint32_t>(wanted);
}

constexpr bool containsAny(ModifierFlags flags, ModifierFlags wanted)
{
    return (static_cast<std::uint32_t>(flags) & static_cast<std::uint32_t>(wanted)) != 0;
}

/// A physical key, numbered by its place on an ANSI keyboard, whatever the layout prints on it.
using KeyCode = std::uint16_t;

namespace keys {
    constexpr KeyCode s = 1;
    constexpr KeyCode returnKey = 36;
    constexpr KeyCode escape = 53;
    constexpr KeyCode f7 = 98;
    constexpr KeyCode f11 = 103;
    constexpr KeyCode print = 105;
    constexpr KeyCode f10 = 109;
    constexpr KeyCode menu = 110;
    constexpr KeyCode f12 = 111;
    constexpr KeyCode home = 115;
    constexpr KeyCode pageUp = 116;
    constexpr KeyCode end = 119;
    constexpr KeyCode pageDown = 121;
    constexpr KeyCode leftArrow = 123;
    constexpr KeyCode rightArrow = 124;
    constexpr KeyCode downArrow = 125;
    constexpr KeyCode upArrow = 126;
    /// A key that has no number of its own.
    constexpr KeyCode unknown = 0xFFFF;
} // namespace keys

/// The subtype of system-defined events that media, brightness and launcher keys make.
constexpr std::int16_t auxiliaryControlButtons = 8;

struct Event {
    EventType type = EventType::KeyDown;
    KeyCode keyCode = keys::unknown; ///< Only meaningful for key and flag events.
    ModifierFlags flags = ModifierFlags::None;
    bool isRepeat = false; ///< A key-down that the keyboard repeats while the key is held.
    std::int16_t subtype = 0; ///< Only meaningful for system-defined events.

    bool operator==(const Event&) const = default;
};

} // namespace quillox
