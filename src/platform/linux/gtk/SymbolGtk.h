#pragma once

#include <gtkmm/drawingarea.h>
#include <string>
#include <string_view>

namespace quillox {

/// One of our symbols as a widget, in the text colour of its place in the style sheet. It says
/// nothing to a screen reader: what it means is the accessible name of the control around it.
class SymbolGtk final : public Gtk::DrawingArea {
public:
    /// `size`: width and height in points.
    SymbolGtk(std::string_view name, double size);

    void set(std::string_view name);

    Gtk::Widget& widget() { return *this; }

private:
    std::string m_name;
};

} // namespace quillox
