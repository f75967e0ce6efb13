#include "platform/linux/gtk/DialogsGtk.h"

#include "platform/linux/system/GlibOwner.h"

#include <glibmm/main.h>
#include <gtkmm/dialog.h>
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

    /// The toolkit's own chooser: its C++ wrapper cannot be taken apart cleanly.
    GtkFileChooser* makeChooser(const OpenPanel& panel)
    {
        auto* chooser = GTK_FILE_CHOOSER(gtk_file_chooser_widget_new(GTK_FILE_CHOOSER_ACTION_OPEN));
        gtk_file_chooser_set_select_multiple(chooser, panel.allowsMultipleSelection);
        const GObjectOwner<GtkFileFilter> filter(gtk_file_filter_new());
        for (const auto& type : panel.contentTypes)
            gtk_file_filter_add_mime_type(filter.get(), type.c_str());
        gtk_file_chooser_set_filter(chooser, filter.get());
        const GObjectOwner<GFile> home(g_file_new_for_path(g_get_home_dir()));
        gtk_file_chooser_set_current_folder(chooser, home.get(), nullptr);
        gtk_widget_set_vexpand(GTK_WIDGET(chooser), TRUE);
        return chooser;
    }

    /// What is selected, else the folder that is shown.
    std::optional<std::string> choiceOf(GtkFileChooser* chooser, const OpenPanel& panel)
    {
        GObjectOwner<GFile> file(gtk_file_chooser_get_file(chooser));
        if (!file && panel.canChooseDirectories)
            file.reset(gtk_file_chooser_get_current_folder(chooser));
        const GTextOwner path(file ? g_file_get_path(file.get()) : nullptr);
        if (!path)
            return std::nullopt;
        const bool isFolder = g_file_test(path.get(), G_FILE_TEST_IS_DIR);
        const bool isWanted = isFolder ? panel.canChooseDirectories : panel.canChooseFiles;
        return isWanted ? std::optional<std::string>(path.get()) : std::nullopt;
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
    dialog->add_css_class("open-panel");
    auto* message = Gtk::make_managed<Gtk::Label>(panel.message);
    message->set_margin(12);
    auto* chooser = makeChooser(panel);
    dialog->get_content_area()->append(*message);
    gtk_box_append(dialog->get_content_area()->gobj(), GTK_WIDGET(chooser));
    dialog->add_button("_Cancel", Gtk::ResponseType::CANCEL);
    dialog->add_button(panel.prompt, Gtk::ResponseType::ACCEPT);
    run(dialog, [chooser, panel, onChosen](int response) {
        onChosen(response == Gtk::ResponseType::ACCEPT ? choiceOf(chooser, panel) : std::nullopt);
    });
}

} // namespace quillox
