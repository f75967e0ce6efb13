#pragma once

#include <gtkmm/widget.h>
#include <string>

namespace quillox {

/// What a screen reader calls a widget that shows no text of its own.
inline void setAccessibleName(Gtk::Widget& widget, std::string_view name)
{
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
        std::string(name).c_str(), -1);
}

inline void setAccessibleDescription(Gtk::Widget& widget, std::string_view description)
{
    gtk_accessible_update_property(GTK_ACCESSIBLE(widget.gobj()),
        GTK_ACCESSIBLE_PROPERTY_DESCRIPTION, std::string(description).c_str(), -1);
}

} // namespace quillox
