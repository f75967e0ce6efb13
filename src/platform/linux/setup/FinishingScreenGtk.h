#pragma once

#include "platform/linux/gtk/LogoGtk.h"
#include "platform/linux/gtk/WidgetStyle.h"

#include <gtkmm/builder.h>
#include <gtkmm/drawingarea.h>
#include <gtkmm/widget.h>

namespace quillox {

/// Shows the card between the guide and the operator screen. Its bar fills from the moment that it
/// shows; where the desktop wants no motion, it is full at once.
class FinishingScreenGtk final {
public:
    FinishingScreenGtk();

    Gtk::Widget& widget() { return get<Gtk::Widget>("card"); }

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void beginFill();
    bool fillOn(const Glib::RefPtr<Gdk::FrameClock>&);
    void drawBar(const Cairo::RefPtr<Cairo::Context>&, int width, int height);

    Glib::RefPtr<Gtk::Builder> m_builder;
    LogoGtk m_logo;
    WidgetStyle m_textStyle;
    Gtk::DrawingArea& m_bar;
    double m_fill = 0;
    gint64 m_start = 0; ///< The frame clock's time in microseconds; 0 before the first frame.
};

} // namespace quillox
