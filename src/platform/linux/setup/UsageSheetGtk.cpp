#include "platform/linux/setup/UsageSheetGtk.h"

#include "platform/linux/setup/SymbolButtonGtk.h"

#include <glibmm/main.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/gestureclick.h>
#include <gtkmm/label.h>
#include <gtkmm/scrolledwindow.h>

namespace quillox {

namespace {

    Gtk::Label& addLabel(Gtk::Box& box, const std::string& text, const char* style)
    {
        auto& label = *Gtk::make_managed<Gtk::Label>(text);
        label.set_xalign(0);
        label.add_css_class(style);
        box.append(label);
        return label;
    }

} // namespace

UsageSheetGtk::UsageSheetGtk(UsageStatsView& view, std::function<void()> onClose)
    : m_view(view)
    , m_onClose(std::move(onClose))
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/usage-sheet.ui"))
    , m_body(get<Gtk::Box>("body"))
{
    fillIn();
    refresh();
    connect();
    connectClosing();
}

UsageSheetGtk::~UsageSheetGtk()
{
    for (auto& connection : m_connections)
        connection.disconnect();
    widget().unparent();
    // The sheet may end from within an event of one of these widgets.
    Glib::signal_idle().connect_once([widgets = m_builder] {});
}

void UsageSheetGtk::fillIn()
{
    get<Gtk::Label>("title").set_text(UsageStatsView::title);
    get<Gtk::Label>("subtitle").set_text(UsageStatsView::subtitle);
    get<Gtk::Button>("reset").set_label(UsageStatsView::resetLabel);
    showSymbol(get<Gtk::Button>("close"), UsageStatsView::closeSymbol, "Close");
}

void UsageSheetGtk::connect()
{
    auto& closeButton = get<Gtk::Button>("close");
    m_connections.push_back(
        widget().signal_map().connect([&closeButton] { closeButton.grab_focus(); }));
    m_connections.push_back(closeButton.signal_clicked().connect([this] { close(); }));
    // The keyboard stops at the body where there is something to scroll.
    auto& scroller = get<Gtk::ScrolledWindow>("scroller");
    const auto height = scroller.get_vadjustment();
    m_connections.push_back(height->signal_changed().connect([&scroller, height] {
        scroller.set_focusable(height->get_upper() > height->get_page_size());
    }));
    m_connections.push_back(get<Gtk::Button>("reset").signal_clicked().connect([this] {
        m_view.resetStats();
        refresh();
    }));
}

void UsageSheetGtk::connectClosing()
{
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    m_connections.push_back(keys->signal_key_pressed().connect(
        [this](unsigned symbol, unsigned, Gdk::ModifierType) {
            if (symbol != GDK_KEY_Escape)
                return false;
            close();
            return true;
        },
        false));
    widget().add_controller(keys);

    auto click = Gtk::GestureClick::create();
    m_connections.push_back(click->signal_pressed().connect([this](int, double x, double y) {
        const auto* picked = widget().pick(x, y);
        if (picked == &widget())
            close();
    }));
    widget().add_controller(click);
}

void UsageSheetGtk::close() const
{
    const auto onClose = m_onClose; // It may destroy this.
    onClose();
}

void UsageSheetGtk::refresh()
{
    while (auto* child = m_body.get_first_child())
        m_body.remove(*child);
    const auto body = m_view.body();
    auto& reset = get<Gtk::Widget>("reset");
    if (body.isEmpty && reset.has_focus())
        get<Gtk::Widget>("close").grab_focus();
    reset.set_sensitive(!body.isEmpty);
    if (body.isEmpty) {
        addLabel(m_body, UsageStatsView::emptyText, "sheet-empty").set_wrap(true);
        return;
    }
    addRows(body.statistics, "statistics", Gtk::Orientation::VERTICAL);
    addRows(body.lines, "lines", Gtk::Orientation::HORIZONTAL);
    addRows(body.websites, "websites", Gtk::Orientation::HORIZONTAL, UsageStatsView::websitesTitle);
}

void UsageSheetGtk::addRows(const std::vector<UsageStatsView::Row>& rows, const char* style,
    Gtk::Orientation orientation, const char* heading)
{
    auto& box = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    box.add_css_class("rows");
    box.add_css_class(style);
    m_body.append(box);
    if (heading)
        addLabel(box, heading, "heading");
    for (const auto& [title, value] : rows) {
        auto& row = *Gtk::make_managed<Gtk::Box>(orientation);
        auto& label = addLabel(row, title, "row-title");
        label.set_hexpand(true);
        label.set_ellipsize(Pango::EllipsizeMode::END);
        if (!value.empty())
            addLabel(row, value, "row-value");
        box.append(row);
    }
}

} // namespace quillox
