#pragma once

#include "platform/linux/gtk/WidgetView.h"

#include <gtkmm/box.h>
#include <gtkmm/overlay.h>
#include <map>
#include <set>
#include <vector>

namespace quillox {

/// Stacks widgets over each other, each at its own frame, which follows the container's size.
class ContainerGtk final : public Container, public WidgetView {
public:
    explicit ContainerGtk(Rect frame);
    ~ContainerGtk() override;

    void add(View&, Rect frame, Autoresizing) override;
    void addBelow(View& sibling, View&, Rect frame, Autoresizing) override;
    void move(View&, Rect frame) override;

    /// A key that went down for the exclusive view reaches none of the others until it was let go,
    /// though that view be gone by then.
    void setExclusive(View*) override;

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

    /// What a widget could do before it was shut out.
    struct Reach {
        bool canFocus;
        bool canTarget;
    };

    bool allocate(Gtk::Widget*, Gdk::Rectangle&);
    void watchKeys();
    bool handleKey(unsigned hardwareKey, bool isPress);
    void shutOut(GtkWidget*);
    void letInAgain();

    double m_planeWidth;
    double m_planeHeight;
    std::vector<Placement> m_placements;
    GtkWidget* m_exclusive = nullptr; ///< Only compared.
    std::map<GtkWidget*, Reach> m_shutOut;
    std::set<unsigned> m_exclusiveKeys; ///< Hardware keycodes that went down for it.
    Gtk::Box m_background;
    Gtk::Overlay m_overlay;
};

} // namespace quillox
