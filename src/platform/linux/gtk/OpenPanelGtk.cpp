#include "platform/linux/gtk/OpenPanelGtk.h"

#include "platform/linux/gtk/Toplevel.h"

#include <algorithm>
#include <giomm/contenttype.h>
#include <glibmm/miscutils.h>
#include <glibmm/uriutils.h>
#include <gtkmm/boolfilter.h>
#include <gtkmm/button.h>
#include <gtkmm/entry.h>
#include <gtkmm/filterlistmodel.h>
#include <gtkmm/image.h>
#include <gtkmm/label.h>
#include <gtkmm/listitem.h>
#include <gtkmm/listview.h>
#include <gtkmm/multisorter.h>
#include <gtkmm/numericsorter.h>
#include <gtkmm/shortcutcontroller.h>
#include <gtkmm/signallistitemfactory.h>
#include <gtkmm/sortlistmodel.h>
#include <gtkmm/stringsorter.h>

namespace quillox {

namespace {

    constexpr auto attributes = "standard::name,standard::display-name,standard::type,"
                                "standard::is-hidden,standard::content-type,standard::icon";

    template <typename Value, typename Function> auto expression(Function function)
    {
        return Gtk::ClosureExpression<Value>::create(
            [function](const Glib::RefPtr<Glib::ObjectBase>& item) -> Value {
                return function(*std::dynamic_pointer_cast<Gio::FileInfo>(item));
            });
    }

    bool isFolder(const Gio::FileInfo& info)
    {
        return info.get_file_type() == Gio::FileType::DIRECTORY;
    }

    void addShortcut(Gtk::Widget& widget, guint key, Gdk::ModifierType modifiers,
        const std::function<void()>& action)
    {
        auto shortcuts = Gtk::ShortcutController::create();
        shortcuts->add_shortcut(Gtk::Shortcut::create(Gtk::KeyvalTrigger::create(key, modifiers),
            Gtk::CallbackAction::create([action](Gtk::Widget&, const Glib::VariantBase&) {
                action();
                return true;
            })));
        widget.add_controller(shortcuts);
    }

    Glib::RefPtr<Gtk::Sorter> foldersFirstThenByName()
    {
        auto sorter = Gtk::MultiSorter::create();
        sorter->append(Gtk::NumericSorter<int>::create(
            expression<int>([](const Gio::FileInfo& info) { return isFolder(info) ? 0 : 1; })));
        sorter->append(Gtk::StringSorter::create(expression<Glib::ustring>(
            [](const Gio::FileInfo& info) { return Glib::ustring(info.get_display_name()); })));
        return sorter;
    }

    void setUpRow(const Glib::RefPtr<Gtk::ListItem>& item)
    {
        auto* row = Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL, 8);
        row->append(*Gtk::make_managed<Gtk::Image>());
        auto* name = Gtk::make_managed<Gtk::Label>();
        name->set_ellipsize(Pango::EllipsizeMode::MIDDLE);
        row->append(*name);
        item->set_child(*row);
    }

    void bindRow(const Glib::RefPtr<Gtk::ListItem>& item)
    {
        const auto info = std::dynamic_pointer_cast<Gio::FileInfo>(item->get_item());
        auto* image = dynamic_cast<Gtk::Image*>(item->get_child()->get_first_child());
        auto* name = dynamic_cast<Gtk::Label*>(item->get_child()->get_last_child());
        if (const auto icon = info->get_icon())
            image->set(icon);
        else
            image->clear();
        name->set_text(info->get_display_name());
    }

    /// The file that a typed text names: a path, absolute, from the home folder or from `folder`.
    Glib::RefPtr<Gio::File> fileNamed(
        const Glib::ustring& text, const Glib::RefPtr<Gio::File>& folder)
    {
        const auto& typed = text.raw();
        const bool isWhole = typed.starts_with('/') || typed.starts_with('~')
            || !Glib::uri_parse_scheme(typed).empty();
        if (isWhole)
            return Gio::File::create_for_parse_name(text);
        return folder->resolve_relative_path(typed);
    }

    Glib::RefPtr<Gio::FileInfo> describe(const Glib::RefPtr<Gio::File>& file)
    {
        try {
            return file->query_info(attributes);
        } catch (const Glib::Error&) {
            return {}; // Nothing that could be chosen is there.
        }
    }

} // namespace

OpenPanelGtk::OpenPanelGtk(const OpenPanel& panel, Gtk::Window* parent)
    : m_panel(panel)
    , m_directory(Gtk::DirectoryList::create(attributes))
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/open-panel.ui"))
{
    refuseInspector(m_window);
    m_window.set_title("Open");
    m_window.set_modal(true);
    m_window.set_default_size(720, 520);
    m_window.set_child(get<Gtk::Widget>("content"));
    if (parent)
        m_window.set_transient_for(*parent);
    fillIn();
    fillList();
    connect();
}

void OpenPanelGtk::fillIn()
{
    get<Gtk::Label>("message").set_text(m_panel.message);
    get<Gtk::Button>("accept").set_label(m_panel.prompt);
}

void OpenPanelGtk::fillList()
{
    auto filter = Gtk::BoolFilter::create(
        expression<bool>([this](const Gio::FileInfo& info) { return isListed(info); }));
    auto listed = Gtk::FilterListModel::create(m_directory, filter);
    m_selection = Gtk::SingleSelection::create();
    m_selection->set_autoselect(false);
    m_selection->set_can_unselect(true);
    m_selection->set_model(Gtk::SortListModel::create(listed, foldersFirstThenByName()));

    auto factory = Gtk::SignalListItemFactory::create();
    factory->signal_setup().connect(&setUpRow);
    factory->signal_bind().connect(&bindRow);
    auto& files = get<Gtk::ListView>("files");
    files.set_factory(factory);
    files.set_model(m_selection);
}

void OpenPanelGtk::connect()
{
    auto& path = get<Gtk::Entry>("path");
    path.signal_changed().connect([this] { markPath(false); });
    path.signal_activate().connect([this] { openPath(); });
    get<Gtk::ListView>("files").signal_activate().connect([this](guint row) { openRow(row); });
    get<Gtk::Button>("up").signal_clicked().connect([this] { showParent(); });
    get<Gtk::Button>("cancel").signal_clicked().connect([this] { answer(std::nullopt); });
    get<Gtk::Button>("accept").signal_clicked().connect([this] { accept(); });
    m_selection->property_selected_item().signal_changed().connect([this] { handleSelection(); });
    m_directory->property_loading().signal_changed().connect([this] { handleLoading(); });
    m_window.signal_close_request().connect(
        [this] {
            answer(std::nullopt);
            return true;
        },
        false);
    connectKeys();
}

void OpenPanelGtk::connectKeys()
{
    using Gdk::ModifierType;
    addShortcut(m_window, GDK_KEY_Escape, {}, [this] { answer(std::nullopt); });
    addShortcut(m_window, GDK_KEY_Up, ModifierType::ALT_MASK, [this] { showParent(); });

    // Left to itself, the list would stop at each of its rows.
    auto& files = get<Gtk::ListView>("files");
    addShortcut(files, GDK_KEY_Tab, {}, [this] { get<Gtk::Button>("cancel").grab_focus(); });
    addShortcut(files, GDK_KEY_Tab, ModifierType::SHIFT_MASK, [this] {
        if (!get<Gtk::Button>("up").grab_focus())
            get<Gtk::Entry>("path").grab_focus();
    });
}

bool OpenPanelGtk::isListed(const Gio::FileInfo& info) const
{
    return !info.is_hidden() && (isFolder(info) || isWanted(info));
}

bool OpenPanelGtk::isWanted(const Gio::FileInfo& info) const
{
    if (isFolder(info))
        return m_panel.canChooseDirectories;
    return m_panel.canChooseFiles && info.get_file_type() == Gio::FileType::REGULAR
        && std::any_of(m_panel.contentTypes.begin(), m_panel.contentTypes.end(),
            [type = info.get_content_type()](
                const auto& wanted) { return Gio::content_type_is_a(type, wanted); });
}

void OpenPanelGtk::present(Answer answer)
{
    m_answer = std::move(answer);
    show(Gio::File::create_for_path(Glib::get_home_dir()));
    focusList();
    m_window.present();
}

void OpenPanelGtk::show(const Glib::RefPtr<Gio::File>& folder)
{
    m_folder = folder;
    get<Gtk::Entry>("path").set_text(folder->get_parse_name());
    get<Gtk::Entry>("path").set_position(-1);
    markPath(false);
    get<Gtk::Button>("up").set_sensitive(folder->has_parent());
    m_directory->set_file(folder);
    m_selection->set_selected(GTK_INVALID_LIST_POSITION);
    get<Gtk::Button>("accept").set_sensitive(choice().has_value());
}

void OpenPanelGtk::showParent()
{
    if (const auto parent = m_folder->get_parent())
        show(parent);
    if (!get<Gtk::Button>("up").is_sensitive())
        focusList(); // The root has nothing above it, and an insensitive button no focus.
}

void OpenPanelGtk::focusList()
{
    get<Gtk::ListView>("files").grab_focus();
}

/// The rows take the keyboard over from the empty list, unless it went elsewhere meanwhile.
void OpenPanelGtk::handleLoading()
{
    auto& files = get<Gtk::ListView>("files");
    const auto* focused = m_window.get_focus();
    if (!m_directory->is_loading() && (!focused || focused == &files))
        focusList();
}

void OpenPanelGtk::open(const Glib::RefPtr<Gio::File>& file, const Gio::FileInfo& info)
{
    if (!isFolder(info))
        return answer(file->get_path());
    show(file);
    focusList();
}

void OpenPanelGtk::openRow(guint position)
{
    const auto item = std::dynamic_pointer_cast<Gio::FileInfo>(m_selection->get_object(position));
    if (item)
        open(m_folder->get_child(item->get_name()), *item);
}

/// A row that is selected puts the path back that belongs to it.
void OpenPanelGtk::handleSelection()
{
    if (m_selection->get_selected_item())
        get<Gtk::Entry>("path").set_text(m_folder->get_parse_name());
    get<Gtk::Button>("accept").set_sensitive(choice().has_value());
}

/// A path that was typed and not entered yet counts first: never is another folder taken.
void OpenPanelGtk::accept()
{
    if (get<Gtk::Entry>("path").get_text() == m_folder->get_parse_name())
        answer(choice());
    else
        openPath();
}

void OpenPanelGtk::openPath()
{
    const auto file = fileNamed(get<Gtk::Entry>("path").get_text(), m_folder);
    const auto info = file->is_native() ? describe(file) : Glib::RefPtr<Gio::FileInfo>();
    if (info && (isFolder(*info) || isWanted(*info)))
        open(file, *info);
    else
        markPath(true);
}

void OpenPanelGtk::markPath(bool isWrong)
{
    auto& path = get<Gtk::Entry>("path");
    if (isWrong)
        path.add_css_class("error");
    else
        path.remove_css_class("error");
    gtk_accessible_update_state(GTK_ACCESSIBLE(path.gobj()), GTK_ACCESSIBLE_STATE_INVALID,
        isWrong ? GTK_ACCESSIBLE_INVALID_TRUE : GTK_ACCESSIBLE_INVALID_FALSE, -1);
}

std::optional<std::string> OpenPanelGtk::choice() const
{
    const auto info
        = std::dynamic_pointer_cast<const Gio::FileInfo>(m_selection->get_selected_item());
    if (!info)
        return m_panel.canChooseDirectories ? std::optional(m_folder->get_path()) : std::nullopt;
    const bool isAcceptable
        = info->get_file_type() != Gio::FileType::DIRECTORY || m_panel.canChooseDirectories;
    return isAcceptable ? std::optional(m_folder->get_child(info->get_name())->get_path())
                        : std::nullopt;
}

void OpenPanelGtk::answer(const std::optional<std::string>& path)
{
    if (!m_answer)
        return;
    const auto answer = std::exchange(m_answer, nullptr);
    m_window.set_visible(false);
    answer(path);
}

} // namespace quillox
