#pragma once

#include "ui/Caption.h"

#include <gtkmm/box.h>
#include <gtkmm/label.h>

namespace quillox {

/// A heading over one line of help, which wraps where it must.
class CaptionGtk final {
public:
    /// Fills a vertical box. There is no second line where there is no help.
    CaptionGtk(Gtk::Box&, const Caption&);

    void setHelp(std::string_view);

    /// Gives a control the heading as its name, and the help as its description.
    void nameControl(Gtk::Widget&) const;

private:
    Gtk::Label m_heading;
    Gtk::Label m_help;
};

} // namespace quillox
