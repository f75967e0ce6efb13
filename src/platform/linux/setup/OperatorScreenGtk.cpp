#include "platform/linux/setup/OperatorScreenGtk.h"

#include <glibmm/main.h>
#include <gtkmm/adjustment.h>
#include <gtkmm/viewport.h>
#include <iterator>
#include <utility>

namespace quillox {

namespace {

    constexpr double focusMargin = 152; ///< Seen above and below what has the keyboard.

} // namespace

OperatorScreenGtk::OperatorScreenGtk(OperatorView& view, RunLoop& runLoop)
    : m_view(view)
    , m_form(view.form())
    , m_runLoop(runLoop)
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/operator-screen.ui"))
    , m_source(m_builder, m_form, runLoop)
    , m_domains(m_builder, m_form, runLoop)
    , m_toggles(makeToggles(m_builder, m_form))
{
    get<Gtk::Box>("logo").append(m_logo.widget());
    refresh();
    connect();
    addBelow();
}

OperatorScreenGtk::~OperatorScreenGtk()
{
    for (auto& connection : m_connections)
        connection.disconnect();
    if (!m_below)
        widget().remove_tick_callback(m_frames);
    setThere(false);
    // The screen may end from within an event of one of these widgets.
    Glib::signal_idle().connect_once(
        [widgets = m_builder, below = m_below ? m_below->widgets() : nullptr] {});
}

void OperatorScreenGtk::connect()
{
    m_connections.push_back(widget().signal_map().connect([this] { setThere(true); }));
    m_connections.push_back(widget().signal_unmap().connect([this] { setThere(false); }));
    const auto keep = [this](std::vector<Handle> handles) {
        std::ranges::move(handles, std::back_inserter(m_observations));
    };
    keep(m_form.observe([this] { refresh(); }));
    keep(m_view.observe([this] { refresh(); }));
    keep(m_view.observeGesture([this] {
        if (m_below)
            m_below->refreshSealBar();
    }));
}

/// The first frame is there sooner without what is below the window's edge, but for the line and
/// the heading that it begins with; these follow with the next one.
void OperatorScreenGtk::addBelow()
{
    m_frames = widget().add_tick_callback([this, isFirst = true](const auto&) mutable {
        if (std::exchange(isFirst, false))
            return true;
        m_below = std::make_unique<OperatorBelowGtk>(m_view, m_runLoop);
        get<Gtk::Box>("column").append(m_below->widget());
        return false;
    });
}

/// The toolkit would stop at the very edge of what has the keyboard.
void OperatorScreenGtk::scrollToFocus()
{
    auto* focus = gtk_root_get_focus(gtk_widget_get_root(widget().gobj()));
    auto& viewport = get<Gtk::Viewport>("viewport");
    graphene_rect_t bounds;
    if (!focus || !gtk_widget_is_ancestor(focus, GTK_WIDGET(viewport.gobj()))
        || !gtk_widget_compute_bounds(focus, GTK_WIDGET(viewport.gobj()), &bounds))
        return;
    const auto scrolled = viewport.get_vadjustment();
    const double top = scrolled->get_value() + bounds.origin.y;
    scrolled->clamp_page(top - focusMargin, top + bounds.size.height + focusMargin);
}

void OperatorScreenGtk::setThere(bool isThere)
{
    if (m_isThere == isThere)
        return;
    m_isThere = isThere;
    if (!isThere) {
        m_focusChanges.disconnect();
        m_view.disappear();
        return;
    }
    auto* window = dynamic_cast<Gtk::Window*>(widget().get_root());
    m_focusChanges
        = window->property_focus_widget().signal_changed().connect([this] { scrollToFocus(); });
    m_view.appear();
    if (m_view.isEnabled() && !std::exchange(m_wasThere, true))
        m_source.focus();
}

void OperatorScreenGtk::refresh()
{
    m_source.update();
    m_domains.update();
    for (auto& toggle : m_toggles)
        toggle->update();
    if (m_below)
        m_below->refresh();
    refreshEnabled();
    refreshSheet();
}

void OperatorScreenGtk::refreshSheet()
{
    auto* stats = m_view.stats();
    if (!!stats == !!m_sheet)
        return;
    if (!stats) {
        m_sheet.reset();
        return;
    }
    m_sheet = std::make_unique<UsageSheetGtk>(*stats, [this] { m_view.closeStats(); });
    get<Gtk::Overlay>("screen").add_overlay(m_sheet->widget());
}

void OperatorScreenGtk::refreshEnabled()
{
    auto& scroller = get<Gtk::Widget>("scroller");
    const bool isEnabled = m_view.isEnabled();
    if (isEnabled == scroller.get_sensitive())
        return;
    // What has the keyboard loses it before it goes dim, and has it back afterwards. What was laid
    // over the screen may have it already, and keeps it.
    auto* window = dynamic_cast<Gtk::Window*>(scroller.get_root());
    auto* focus = window ? window->get_focus() : nullptr;
    if (!isEnabled && focus && focus->is_ancestor(scroller))
        m_focus.take(*window);
    scroller.set_sensitive(isEnabled);
    if (isEnabled)
        m_focus.giveBack();
}

} // namespace quillox
