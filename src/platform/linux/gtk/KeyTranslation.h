#pragma once

#include "ports/Event.h"

#include <gdk/gdk.h>
#include <optional>

namespace quillox {

/// The number of the physical key behind an X or Wayland keycode (kernel code plus 8).
KeyCode keyCodeFor(unsigned hardwareKeycode);

/// The same, but keys that toolkits react to by their symbol have that symbol's number, wherever
/// the layout puts them.
KeyCode keyCodeFor(unsigned hardwareKeycode, unsigned keySymbol);

/// The other way round; none for `keys::unknown`.
std::optional<unsigned> hardwareKeyFor(KeyCode);

/// Whether a key symbol is a media, brightness or launcher key's.
bool isAuxiliaryControl(unsigned keySymbol);

/// The modifier that a key symbol stands for; `None` for every other key. Either Super key is
/// Command.
ModifierFlags modifierFor(unsigned keySymbol);

ModifierFlags flagsFor(GdkModifierType state);

} // namespace quillox
