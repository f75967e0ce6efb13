#include "platform/linux/gtk/DialogsGtk.h"

#include "platform/linux/gtk/OpenPanelGtk.h"
#include "platform/linux/gtk/Toplevel.h"

#include <glibmm/main.h>
#include <gtkmm/dialog.h>
#include <gtkmm/messagedialog.h>

namespace quillox {

namespace {

    /// Shows a dialog that the main loop deletes after its one answer.
    template <typename Answer> void run(Gtk::Dialog* dialog, Answer answer)
    {
        refuseInspector(*dialog);
        dialog->set_modal(true);
        dialog->signal_response().connect(
            [dialog, answer, isAnswered = false](int response) mutable {
                if (std::exchange(isAnswered, true))
                    return;
                dialog->set_visible(false);
                Glib::signal_idle().connect_once([dialog] { delete dialog; });
                answer(response);
            });
        dialog->present();
    }

} // namespace

void DialogsGtk::present(const Alert& alert, std::function<void(std::size_t)> onButton)
{
    auto* dialog = new Gtk::MessageDialog(alert.message, false,
        alert.style == Alert::Style::Warning ? Gtk::MessageType::WARNING : Gtk::MessageType::INFO,
        Gtk::ButtonsType::NONE);
    dialog->set_secondary_text(alert.informativeText);
    for (std::size_t index = 0; index < alert.buttons.size(); ++index)
        dialog->add_button(alert.buttons[index], static_cast<int>(index));
    dialog->set_default_response(0);
    if (m_parent)
        dialog->set_transient_for(*m_parent);
    run(dialog, [onButton, last = alert.buttons.size() - 1](int response) {
        // Escape and the window's own button count as the last one.
        onButton(response >= 0 ? static_cast<std::size_t>(response) : last);
    });
}

void DialogsGtk::present(
    const OpenPanel& panel, std::function<void(std::optional<std::string>)> onChosen)
{
    auto window = std::make_shared<OpenPanelGtk>(panel, m_parent);
    window->present([window, onChosen](const std::optional<std::string>& path) {
        Glib::signal_idle().connect_once([window] { /* Lived until here. */ });
        onChosen(path);
    });
}

} // namespace quillox
