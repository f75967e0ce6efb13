#include "platform/linux/setup/OperatorScreenGtk.h"

#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/setup/SymbolButtonGtk.h"
#include "ui/HelpPages.h"

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
    , m_position([this](NavPosition position) { m_form.setNavPosition(position); })
    , m_barColor([this](NotchBarColor color) { m_form.setNotchBarColor(color); })
    , m_display(get<Gtk::MenuButton>("display"),
          [this](std::int64_t id) { m_form.setDisplay(static_cast<std::uint32_t>(id)); })
    , m_idleReset(get<Gtk::MenuButton>("idle-reset"),
          [this](std::int64_t seconds) { m_form.setIdleReset(seconds); })
    , m_password(
          get<Gtk::Box>("password-box"), [this] { return m_form.passwordField(); }, runLoop)
    , m_showsPassword(m_form.showsExitPassword())
{
    get<Gtk::Box>("logo").append(m_logo.widget());
    addToggles();
    addChoices();
    addPassword();
    addButtons();
    addSealBlock();
    refresh();
    connect();
    showBelow();
}

OperatorScreenGtk::~OperatorScreenGtk()
{
    for (auto& connection : m_connections)
        connection.disconnect();
    setThere(false);
    // The screen may end from within an event of one of these widgets.
    Glib::signal_idle().connect_once([widgets = m_builder] {});
}

void OperatorScreenGtk::addCaption(const char* id, const Caption& caption, const char* controlId)
{
    m_captions.push_back(std::make_unique<CaptionGtk>(get<Gtk::Box>(id), caption));
    if (controlId)
        m_captions.back()->nameControl(get<Gtk::Widget>(controlId));
}

void OperatorScreenGtk::addToggles()
{
    addCaption("nav-bar-caption", OperatorForm::navBarCaption, "nav-toggles");
    for (const auto& toggle : OperatorForm::toggles) {
        const auto* id = toggle.name.data(); // A literal, which ends where it should.
        if (toggle.symbol.empty())
            m_toggles.push_back(std::make_unique<ToggleRowGtk>(get<Gtk::Box>(id), m_form, toggle));
        else
            m_toggles.push_back(
                std::make_unique<ToggleTileGtk>(get<Gtk::ToggleButton>(id), m_form, toggle));
    }
}

void OperatorScreenGtk::addChoices()
{
    addCaption("position-caption", OperatorForm::positionCaption, "position");
    for (const auto position : allNavPositions) {
        auto& button = get<Gtk::CheckButton>(rawValue(position).data());
        setAccessibleName(button, OperatorForm::positionName(position));
        button.set_tooltip_text(std::string(OperatorForm::positionName(position)));
        m_position.add(button, position);
    }
    addCaption("bar-color-caption", OperatorForm::barColorCaption, "bar-color");
    for (const auto color : allNotchBarColors) {
        auto& button = get<Gtk::CheckButton>(rawValue(color).data());
        button.set_label(std::string(OperatorForm::barColorTitle(color)));
        m_barColor.add(button, color);
    }
    addCaption("display-caption", OperatorForm::displayCaption, "display");
    addCaption("idle-reset-caption", OperatorForm::idleResetCaption, "idle-reset");
}

void OperatorScreenGtk::addPassword()
{
    get<Gtk::Label>("password-heading").set_text(std::string(OperatorForm::passwordHeading));
    auto& eye = get<Gtk::Button>("eye");
    m_eye = &showSymbol(eye, m_form.eyeSymbol(), m_form.eyeName());
    eye.signal_clicked().connect([this] { m_form.toggleShowExitPassword(); });
}

void OperatorScreenGtk::addButtons()
{
    addCaption("usage-caption", OperatorView::usageCaption, "usage");
    auto& usage = get<Gtk::Button>("usage");
    get<Gtk::Box>("usage-row").append(*Gtk::make_managed<SymbolGtk>(OperatorView::usageSymbol, 18));
    usage.signal_clicked().connect([this] { m_view.openStats(); });

    addCaption("check-caption", { OperatorForm::checkHeading, m_form.versionLine() });
    auto& check = get<Gtk::Button>("check-now");
    check.set_label(std::string(OperatorForm::checkTitle));
    check.signal_clicked().connect([this] { m_form.checkForUpdates(); });

    get<Gtk::Label>("footer").set_text(std::string(OperatorView::footer));
    auto& guide = get<Gtk::Button>("guide-link");
    guide.set_label(std::string(OperatorView::guideLink));
    guide.set_tooltip_text(std::string(OperatorView::guideHelp));
    guide.signal_clicked().connect([this] { m_view.openSetupGuide(); });
    auto& site = get<Gtk::Button>("site-link");
    site.set_label(helpPages::webSiteName);
    site.signal_clicked().connect([this] { m_view.openWebSite(); });
}

void OperatorScreenGtk::addSealBlock()
{
    get<Gtk::Label>("seal-heading").set_text(std::string(OperatorView::sealHeading));
    get<Gtk::Box>("key-caps").append(m_keyCaps.widget());
    auto& help = get<Gtk::Label>("seal-help");
    help.set_text(std::string(OperatorView::sealHelp));
    setAccessibleName(help, spokenKeys(OperatorView::sealHelp));
    get<Gtk::Box>("seal").append(m_sealBar.widget());
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
    keep(m_view.observeGesture([this] { m_sealBar.update(m_view.sealAction()); }));
}

/// The first frame is there sooner without what is below the window's edge in any case.
void OperatorScreenGtk::showBelow()
{
    auto& below = get<Gtk::Widget>("below");
    widget().add_tick_callback([&below, isFirst = true](const auto&) mutable {
        below.set_visible(!isFirst);
        return std::exchange(isFirst, false);
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
    m_position.update(m_form.navPosition());
    m_barColor.update(m_form.notchBarColor());
    refreshMenus();
    refreshPassword();
    m_sealBar.update(m_view.sealAction());
    refreshEnabled();
    refreshSheet();
}

void OperatorScreenGtk::refreshMenus()
{
    ChoiceMenuGtk::Items displays;
    for (const auto& display : m_form.displayItems())
        displays.emplace_back(display.label, display.id);
    m_display.update(m_form.displayLabel(), std::move(displays), m_form.displayID());
    ChoiceMenuGtk::Items presets;
    for (const auto& [label, seconds] : OperatorForm::idlePresets)
        presets.emplace_back(label, seconds);
    m_idleReset.update(m_form.idlePresetLabel(), std::move(presets), m_form.idleResetSeconds());
}

void OperatorScreenGtk::refreshPassword()
{
    setStyleClass(get<Gtk::Widget>("password-box"), "wanting", m_form.exitPasswordWarn());
    if (m_showsPassword == m_form.showsExitPassword()) {
        m_password.update();
        return;
    }
    m_showsPassword = m_form.showsExitPassword();
    m_password.remake();
    m_eye->set(m_form.eyeSymbol());
    auto& eye = get<Gtk::Button>("eye");
    eye.set_tooltip_text(std::string(m_form.eyeName()));
    setAccessibleName(eye, m_form.eyeName());
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
