#pragma once

#include "ports/Dialogs.h"

#include <giomm/file.h>
#include <giomm/fileinfo.h>
#include <gtkmm/builder.h>
#include <gtkmm/directorylist.h>
#include <gtkmm/singleselection.h>
#include <gtkmm/window.h>

namespace quillox {

/// Asks for one folder or file. It begins in the home folder, follows what changes on disk, and
/// selects nothing by itself. Folders can always be entered; hidden files are never listed. A typed
/// path that leads to nothing that may be chosen keeps the panel.
///
/// The toolkit's own chooser selects the first row of each folder that is entered, which would
/// have the wrong folder taken.
class OpenPanelGtk final {
public:
    using Answer = std::function<void(std::optional<std::string>)>;

    /// `parent` may be null.
    OpenPanelGtk(const OpenPanel&, Gtk::Window* parent);
    OpenPanelGtk(const OpenPanelGtk&) = delete;
    OpenPanelGtk& operator=(const OpenPanelGtk&) = delete;

    /// To be called once. The answer comes once, out of an event of the panel: whoever destroys
    /// the panel upon it has to wait until the main loop turns again.
    void present(Answer);

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn();
    void fillList();
    void connect();
    void connectKeys();

    bool isListed(const Gio::FileInfo&) const;
    bool isWanted(const Gio::FileInfo&) const;

    void show(const Glib::RefPtr<Gio::File>& folder);
    void showParent();
    void focusList();
    void handleLoading();
    void open(const Glib::RefPtr<Gio::File>&, const Gio::FileInfo&);
    void openRow(guint position);
    void handleSelection();
    void accept();
    void openPath();
    void markPath(bool isWrong);

    /// What the accepting button takes: the selected row, else the folder that is shown.
    std::optional<std::string> choice() const;
    void answer(const std::optional<std::string>&);

    const OpenPanel m_panel;
    Answer m_answer;
    Glib::RefPtr<Gio::File> m_folder;
    Glib::RefPtr<Gtk::DirectoryList> m_directory;
    Glib::RefPtr<Gtk::SingleSelection> m_selection;
    Glib::RefPtr<Gtk::Builder> m_builder;
    Gtk::Window m_window;
};

} // namespace quillox
