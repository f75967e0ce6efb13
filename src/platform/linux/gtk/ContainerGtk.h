#pragma once

#include "platform/linux/gtk/WidgetView.h"

#include <gtkmm/box.h>
#include <gtkmm/overlay.h>
#include <vector>

namespace quillox {

/// Stacks widgets over each other, each at its own frame, which follows the container's size.
class ContainerGtk final : public Container, public WidgetView {
public:
    explicit ContainerGtk(Rect frame);
    ~ContainerGtk() override;

    void add(View&, Rect frame, Autoresizing) override;
    void move(View&, Rect frame) override;
    Gtk::Widget& widget() override { return m_overlay; }

    /// The plane in which `move` and `add` give their frames.
    void setPlane(double width, double height);

private:
    struct Placement {
        Gtk::Widget* widget;
        Rect frame;
        double planeWidth;
        double planeHeight;
        Autoresizing autoresizing;
    };

    bool allocate(Gtk::Widget*, Gdk::Rectangle&);

    double m_planeWidth;
    double m_planeHeight;
    std::vector<Placement> m_placements;
    Gtk::Box m_background;
    Gtk::Overlay m_overlay;
};

} // namespace quillox
