#pragma once

#include <gtkmm/layoutmanager.h>

namespace quillox {

/// Stacks texts from top to bottom, each as high as it needs for the width that there is. A box
/// would also seek the width for a given height, with dozens of attempts to break every text into
/// lines anew, which was most of the work for the first frame of the operator's screen. All it can
/// do is to stack: no spacing, no expansion.
class ColumnLayout final : public Gtk::LayoutManager {
public:
    static Glib::RefPtr<ColumnLayout> create();

protected:
    Gtk::SizeRequestMode get_request_mode_vfunc(const Gtk::Widget&) const override;
    void measure_vfunc(const Gtk::Widget&, Gtk::Orientation, int forSize, int& minimum,
        int& natural, int& minimumBaseline, int& naturalBaseline) const override;
    void allocate_vfunc(const Gtk::Widget&, int width, int height, int baseline) override;
};

} // namespace quillox
