#pragma once

#include "lockdown/SealOverlays.h"

#include <gtkmm/builder.h>
#include <gtkmm/drawingarea.h>
#include <gtkmm/widget.h>

namespace quillox {

/// A dark panel in the middle of whatever it is laid over. It lets every click through.
class SealPanelGtk {
public:
    SealPanelGtk();
    virtual ~SealPanelGtk();
    SealPanelGtk(const SealPanelGtk&) = delete;
    SealPanelGtk& operator=(const SealPanelGtk&) = delete;

    /// Covers what it is laid over; only the panel in it shows.
    Gtk::Widget& widget() { return get<Gtk::Widget>("cover"); }

    /// Makes a banner of it, which hangs from the top edge.
    void moveToTop();

protected:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void setShown(bool isShown);
    void setText(const char* id, const std::string& text);

private:
    Glib::RefPtr<Gtk::Builder> m_builder;
};

class SealHoldOverlayGtk final : public SealPanelGtk {
public:
    SealHoldOverlayGtk();

    /// While it is shown, only the bar is drawn anew, and only when it has grown.
    void update(const SealHoldOverlay&);

private:
    void drawBar(const Cairo::RefPtr<Cairo::Context>&, int width, int height) const;

    SealHoldOverlay m_shown;
    Gtk::DrawingArea& m_bar;
};

class SealReleaseOverlayGtk final : public SealPanelGtk {
public:
    SealReleaseOverlayGtk();

    using SealPanelGtk::setShown;
};

class SealHintOverlayGtk final : public SealPanelGtk {
public:
    void update(const SealHintOverlay&);
};

} // namespace quillox
