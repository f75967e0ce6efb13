#pragma once

#include "ui/AutoStartCountdownOverlay.h"

#include <gtkmm/builder.h>
#include <gtkmm/widget.h>

namespace quillox {

/// Shows the countdown over whatever it is laid over, and takes the keyboard. Make it when the
/// countdown begins; it may be destroyed from within the cancellation that it asks for.
class CountdownOverlayGtk final {
public:
    explicit CountdownOverlayGtk(AutoStartCountdownOverlay&);
    ~CountdownOverlayGtk();
    CountdownOverlayGtk(const CountdownOverlayGtk&) = delete;
    CountdownOverlayGtk& operator=(const CountdownOverlayGtk&) = delete;

    Gtk::Widget& widget() { return get<Gtk::Widget>("scrim"); }

    /// After each second.
    void update();

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void connect();
    bool cancel();

    AutoStartCountdownOverlay& m_overlay;
    Glib::RefPtr<Gtk::Builder> m_builder;
    std::vector<sigc::connection> m_connections;
};

} // namespace quillox
