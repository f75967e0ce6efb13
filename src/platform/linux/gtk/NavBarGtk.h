#pragma once

#include "kiosk/KioskNavBar.h"
#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/gtk/WidgetView.h"

#include <gtkmm/box.h>
#include <list>

namespace quillox {

/// The bar and its buttons. Neither ever has the keyboard, and what is clicked beside a button
/// reaches nothing below the bar. The model outlives this.
class NavBarGtk final : public View, public WidgetView {
public:
    explicit NavBarGtk(KioskNavBar&);
    ~NavBarGtk() override;

    Gtk::Widget& widget() override { return m_bar; }

private:
    class Button;

    Gtk::Box m_bar;
    WidgetStyle m_style;
    std::list<Button> m_buttons;
};

} // namespace quillox
