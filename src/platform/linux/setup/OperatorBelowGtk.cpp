#include "platform/linux/setup/OperatorBelowGtk.h"

#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/setup/SymbolButtonGtk.h"
#include "ui/HelpPages.h"

#include <utility>

namespace quillox {

OperatorBelowGtk::OperatorBelowGtk(OperatorView& view, RunLoop& runLoop)
    : m_view(view)
    , m_form(view.form())
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/operator-below.ui"))
    , m_toggles(makeToggles(m_builder, m_form))
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
    addNavBar();
    addChoices();
    addPassword();
    addButtons();
    addSealBlock();
    refresh();
}

void OperatorBelowGtk::addCaption(const char* id, const Caption& caption, const char* controlId)
{
    m_captions.push_back(std::make_unique<CaptionGtk>(get<Gtk::Box>(id), caption));
    if (controlId)
        m_captions.back()->nameControl(get<Gtk::Widget>(controlId));
}

void OperatorBelowGtk::addNavBar()
{
    addCaption("nav-bar-caption", OperatorForm::navBarCaption, "nav-toggles");
    addCaption("position-caption", OperatorForm::positionCaption, "position");
    for (const auto position : allNavPositions) {
        auto& button = get<Gtk::CheckButton>(rawValue(position).data());
        setAccessibleName(button, OperatorForm::positionName(position));
        button.set_tooltip_text(std::string(OperatorForm::positionName(position)));
        m_position.add(button, position);
    }
}

void OperatorBelowGtk::addChoices()
{
    addCaption("bar-color-caption", OperatorForm::barColorCaption, "bar-color");
    for (const auto color : allNotchBarColors) {
        auto& button = get<Gtk::CheckButton>(rawValue(color).data());
        button.set_label(std::string(OperatorForm::barColorTitle(color)));
        m_barColor.add(button, color);
    }
    addCaption("display-caption", OperatorForm::displayCaption, "display");
    addCaption("idle-reset-caption", OperatorForm::idleResetCaption, "idle-reset");
}

void OperatorBelowGtk::addPassword()
{
    get<Gtk::Label>("password-heading").set_text(std::string(OperatorForm::passwordHeading));
    auto& eye = get<Gtk::Button>("eye");
    m_eye = &showSymbol(eye, m_form.eyeSymbol(), m_form.eyeName());
    eye.signal_clicked().connect([this] { m_form.toggleShowExitPassword(); });
}

void OperatorBelowGtk::addButtons()
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

void OperatorBelowGtk::addSealBlock()
{
    get<Gtk::Label>("seal-heading").set_text(std::string(OperatorView::sealHeading));
    get<Gtk::Box>("key-caps").append(m_keyCaps.widget());
    auto& help = get<Gtk::Label>("seal-help");
    help.set_text(std::string(OperatorView::sealHelp));
    setAccessibleName(help, spokenKeys(OperatorView::sealHelp));
    get<Gtk::Box>("seal").append(m_sealBar.widget());
}

void OperatorBelowGtk::refresh()
{
    for (auto& toggle : m_toggles)
        toggle->update();
    m_position.update(m_form.navPosition());
    m_barColor.update(m_form.notchBarColor());
    refreshMenus();
    refreshPassword();
    refreshSealBar();
}

void OperatorBelowGtk::refreshMenus()
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

void OperatorBelowGtk::refreshPassword()
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

} // namespace quillox
