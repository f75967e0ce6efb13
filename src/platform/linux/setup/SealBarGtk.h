#pragma once

#include "platform/linux/setup/KeyCapsGtk.h"
#include "ui/Caption.h"

#include <gtkmm/box.h>
#include <gtkmm/label.h>
#include <gtkmm/widget.h>

namespace quillox {

/// The bar that a `SealBar` describes. Its content is drawn twice, plain and filled, each in a look
/// of its own, and the edge of the fill parts the two: the text is readable at every fill.
class SealBarGtk final {
public:
    SealBarGtk();

    Gtk::Widget& widget() { return m_bar; }

    /// Draws anew only what has changed.
    void update(const SealBar&);

    /// The keys of the gesture after the text.
    void setShowsKeyCaps(bool);

private:
    struct Face {
        Face();

        Gtk::Box box;
        Gtk::Label text;
        KeyCapsGtk keyCaps;
    };

    class Bar final : public Gtk::Widget {
    public:
        Bar(Gtk::Widget& plain, Gtk::Widget& filled);
        ~Bar() override;

        void setFill(double fill);

    protected:
        void snapshot_vfunc(const Glib::RefPtr<Gtk::Snapshot>&) override;

    private:
        Gtk::Widget& m_plain;
        Gtk::Widget& m_filled;
        double m_fill = 0;
    };

    Face m_plain;
    Face m_filled;
    Bar m_bar;
    std::string m_text;
    double m_fill = 0;
};

} // namespace quillox
