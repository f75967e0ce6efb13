#pragma once

#include "support/Handle.h"
#include "ui/AutoStartCountdownOverlay.h"
#include "ui/SetupView.h"

#include <gtkmm/builder.h>
#include <gtkmm/window.h>
#include <vector>

namespace quillox {

/// Shows the setup screen and the countdown over it.
class SetupWindowGtk final {
public:
    SetupWindowGtk(SetupView&, AutoStartCountdownOverlay&, const char* title);

    Gtk::Window& window() { return m_window; }

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn();
    void connectSetup();
    void connectCountdown();
    void refresh();

    SetupView& m_view;
    AutoStartCountdownOverlay& m_countdown;
    Glib::RefPtr<Gtk::Builder> m_builder;
    Gtk::Window m_window;
    std::vector<Handle> m_observations;
};

} // namespace quillox
