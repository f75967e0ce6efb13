#pragma once

#include <gtkmm/box.h>
#include <string>
#include <string_view>

namespace quillox {

/// `text` with the keys of the seal gesture named, for those who hear it: their symbols mean
/// nothing to a speech synthesizer.
std::string spokenKeys(std::string_view text);

/// The keys of the seal gesture as they look on a keyboard, in a row. How large they are follows
/// from the style of what they stand in.
class KeyCapsGtk final {
public:
    KeyCapsGtk();

    Gtk::Widget& widget() { return m_row; }

private:
    Gtk::Box m_row;
};

} // namespace quillox
