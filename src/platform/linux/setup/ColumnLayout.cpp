#include "platform/linux/setup/ColumnLayout.h"

#include <algorithm>
#include <gtkmm/widget.h>

namespace quillox {

namespace {

    struct Request {
        int minimum = 0;
        int natural = 0;
    };

    Request request(GtkWidget* child, GtkOrientation orientation, int forSize)
    {
        Request wanted;
        gtk_widget_measure(
            child, orientation, forSize, &wanted.minimum, &wanted.natural, nullptr, nullptr);
        return wanted;
    }

    template <typename Visit> void forEachChild(const Gtk::Widget& column, Visit visit)
    {
        for (auto* child = gtk_widget_get_first_child(const_cast<GtkWidget*>(column.gobj())); child;
             child = gtk_widget_get_next_sibling(child)) {
            if (gtk_widget_should_layout(child))
                visit(child);
        }
    }

} // namespace

Glib::RefPtr<ColumnLayout> ColumnLayout::create()
{
    return Glib::make_refptr_for_instance(new ColumnLayout);
}

Gtk::SizeRequestMode ColumnLayout::get_request_mode_vfunc(const Gtk::Widget&) const
{
    return Gtk::SizeRequestMode::HEIGHT_FOR_WIDTH;
}

void ColumnLayout::measure_vfunc(const Gtk::Widget& column, Gtk::Orientation orientation,
    int forSize, int& minimum, int& natural, int& minimumBaseline, int& naturalBaseline) const
{
    minimum = natural = 0;
    minimumBaseline = naturalBaseline = -1;
    forEachChild(column, [&](GtkWidget* child) {
        if (orientation == Gtk::Orientation::HORIZONTAL) {
            const auto width = request(child, GTK_ORIENTATION_HORIZONTAL, -1);
            minimum = std::max(minimum, width.minimum);
            natural = std::max(natural, width.natural);
        } else {
            const auto height = request(child, GTK_ORIENTATION_VERTICAL, forSize);
            minimum += height.minimum;
            natural += height.natural;
        }
    });
}

void ColumnLayout::allocate_vfunc(const Gtk::Widget& column, int width, int, int)
{
    int top = 0;
    forEachChild(column, [&](GtkWidget* child) {
        const int height = request(child, GTK_ORIENTATION_VERTICAL, width).natural;
        const GtkAllocation place { 0, top, width, height };
        gtk_widget_size_allocate(child, &place, -1);
        top += height;
    });
}

} // namespace quillox
