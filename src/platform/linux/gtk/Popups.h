#pragma once

#include <gtk/gtk.h>

namespace quillox {

/// Closes the lists and menus that a widget has opened. An open one takes every key, whatever has
/// the focus.
void closePopups(GtkWidget* owner);

} // namespace quillox
