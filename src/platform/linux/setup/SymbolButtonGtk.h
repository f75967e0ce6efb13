#pragma once

#include "platform/linux/gtk/SymbolGtk.h"
#include "platform/linux/setup/AccessibleGtk.h"

#include <gtkmm/button.h>

namespace quillox {

/// Makes a symbol the face of a button, and `name` what it is called.
inline SymbolGtk& showSymbol(Gtk::Button& button, std::string_view symbol, std::string_view name)
{
    constexpr double size = 18;
    auto& face = *Gtk::make_managed<SymbolGtk>(symbol, size);
    button.set_child(face);
    button.set_tooltip_text(std::string(name));
    setAccessibleName(button, name);
    return face;
}

} // namespace quillox
