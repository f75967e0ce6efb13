#pragma once

#include "ports/View.h"

#include <gtkmm/widget.h>

namespace quillox {

/// What every view of this platform is besides: something with a widget. The widget leaves its
/// parent with the view.
class WidgetView {
public:
    virtual ~WidgetView() = default;
    virtual Gtk::Widget& widget() = 0;
};

/// The widget behind a view of the core; every view there was made by this platform.
inline Gtk::Widget& widgetOf(View& view)
{
    return dynamic_cast<WidgetView&>(view).widget();
}

} // namespace quillox
