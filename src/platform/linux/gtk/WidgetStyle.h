#pragma once

#include "support/Geometry.h"

#include <gtkmm/cssprovider.h>
#include <gtkmm/stylecontext.h>
#include <gtkmm/widget.h>
#include <string>

namespace quillox {

std::string cssColor(const Color&);

/// What text in the widget has by the style sheet, as the widget is now.
Color textColor(const Gtk::Widget&);

/// Gives a widget a class of the style sheet, or takes it away.
void setStyleClass(Gtk::Widget&, const char* name, bool isSet);

/// Style of one widget that the style sheet cannot know, because the core says it.
class WidgetStyle final {
public:
    explicit WidgetStyle(Gtk::Widget&);

    /// Replaces what was set before. The rules apply to the widget and to the parts inside it that
    /// are no widgets of their own.
    void set(const std::string& rules);

private:
    Glib::RefPtr<Gtk::CssProvider> m_provider = Gtk::CssProvider::create();
};

} // namespace quillox
