#pragma once

#include <gtkmm/drawingarea.h>

namespace quillox {

/// The product's logo, in the text colour of its place in the style sheet. A screen reader calls it
/// by the product's name.
class LogoGtk final {
public:
    /// In points; the width follows.
    explicit LogoGtk(double height);

    Gtk::Widget& widget() { return m_area; }

private:
    Gtk::DrawingArea m_area;
};

} // namespace quillox
