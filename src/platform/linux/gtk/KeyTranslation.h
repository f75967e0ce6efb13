#pragma once

#include "ports/Event.h"

#include <gdk/gdk.h>

namespace quillox {

/// The number of the physical key behind an X or Wayland keycode (kernel code plus 8).
KeyCode keyCodeFor(unsigned hardwareKeycode);

/// The modifier that a key symbol stands for; `None` for every other key. Either Super key is
/// Command.
ModifierFlags modifierFor(unsigned keySymbol);

ModifierFlags flagsFor(GdkModifierType state);

} // namespace quillox
