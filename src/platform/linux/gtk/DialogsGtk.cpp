#include "platform/linux/gtk/DialogsGtk.h"

#include <glibmm/main.h>
#include <gtkmm/dialog.h>
#include <gtkmm/filechooserwidget.h>
#include <gtkmm/filefilter.h>
#include <gtkmm/label.h>
#include <gtkmm/messagedialog.h>

namespace quillox {

namespace {

    /// Shows a dialog that the main loop deletes after its one answer.
    template <typename Answer> void run(Gtk::Dialog* dialog, Answer answer)
    {
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

    Glib::RefPtr<Gtk::FileFilter> filterFor(const std::vector<std::string>& contentTypes)
    {
        auto filter = Gtk::FileFilter::create();
        for (const auto& type : contentTypes)
            filter->add_mime_type(type);
        return filter;
    }

    /// A file that is selected, else a folder that is, else the folder that is shown.
    std::optional<std::string> choiceOf(
        const Gtk::FileChooserWidget& chooser, const OpenPanel& panel)
    {
        auto file = chooser.get_file();
        if (!file && panel.canChooseDirectories)
            file = chooser.get_current_folder();
        if (!file || file->get_path().empty())
            return std::nullopt;
        const bool isFolder = file->query_file_type() == Gio::FileType::DIRECTORY;
        return (isFolder ? panel.canChooseDirectories : panel.canChooseFiles)
            ? std::optional(file->get_path())
            : std::nullopt;
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
    auto* dialog = new Gtk::Dialog;
    dialog->set_title("Quillox");
    dialog->set_default_size(820, 560);
    if (m_parent)
        dialog->set_transient_for(*m_parent);
    auto* message = Gtk::make_managed<Gtk::Label>(panel.message);
    message->set_margin(12);
    auto* chooser = Gtk::make_managed<Gtk::FileChooserWidget>(Gtk::FileChooser::Action::OPEN);
    chooser->set_select_multiple(panel.allowsMultipleSelection);
    chooser->set_filter(filterFor(panel.contentTypes));
    chooser->set_vexpand(true);
    dialog->get_content_area()->append(*message);
    dialog->get_content_area()->append(*chooser);
    dialog->add_button("_Cancel", Gtk::ResponseType::CANCEL);
    dialog->add_button(panel.prompt, Gtk::ResponseType::ACCEPT);
    run(dialog, [chooser, panel, onChosen](int response) {
        onChosen(response == Gtk::ResponseType::ACCEPT ? choiceOf(*chooser, panel) : std::nullopt);
    });
}

} // namespace quillox
