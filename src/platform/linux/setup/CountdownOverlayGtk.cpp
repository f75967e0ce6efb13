#include "platform/linux/setup/CountdownOverlayGtk.h"

#include <glibmm/main.h>
#include <gtkmm/button.h>
#include <gtkmm/gestureclick.h>
#include <gtkmm/label.h>
#include <gtkmm/shortcutcontroller.h>

namespace quillox {

CountdownOverlayGtk::CountdownOverlayGtk(AutoStartCountdownOverlay& overlay)
    : m_overlay(overlay)
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/countdown.ui"))
{
    get<Gtk::Label>("hint").set_text(AutoStartCountdownOverlay::hint);
    get<Gtk::Button>("cancel").set_label(AutoStartCountdownOverlay::cancelTitle);
    connect();
    update();
}

CountdownOverlayGtk::~CountdownOverlayGtk()
{
    for (auto& connection : m_connections)
        connection.disconnect();
    widget().unparent();
    // A click on one of these widgets may be under way.
    Glib::signal_idle().connect_once([widgets = m_builder] {});
}

void CountdownOverlayGtk::update()
{
    get<Gtk::Label>("title").set_text(m_overlay.title());
}

void CountdownOverlayGtk::connect()
{
    auto& button = get<Gtk::Button>("cancel");
    m_connections.push_back(button.signal_clicked().connect([this] { cancel(); }));
    m_connections.push_back(widget().signal_map().connect([&button] { button.grab_focus(); }));

    auto click = Gtk::GestureClick::create();
    m_connections.push_back(
        click->signal_released().connect([this](int, double, double) { cancel(); }));
    widget().add_controller(click);

    auto keys = Gtk::ShortcutController::create();
    keys->set_scope(Gtk::ShortcutScope::GLOBAL); // Wherever the keyboard is in the window.
    keys->add_shortcut(Gtk::Shortcut::create(Gtk::KeyvalTrigger::create(GDK_KEY_Escape),
        Gtk::CallbackAction::create(
            [this](Gtk::Widget&, const Glib::VariantBase&) { return cancel(); })));
    widget().add_controller(keys);
}

/// Once: whoever shows the overlay takes it away within this call.
bool CountdownOverlayGtk::cancel()
{
    const bool isShown = m_overlay.isShown();
    if (isShown)
        m_overlay.cancel();
    return isShown;
}

} // namespace quillox
