#include "platform/linux/setup/OnboardingScreenGtk.h"

#include <gtkmm/box.h>
#include <gtkmm/label.h>
#include <gtkmm/stack.h>

namespace quillox {

namespace {

    constexpr double logoHeight = 64;

    void setStyle(Gtk::Widget& widget, const char* name, bool isSet)
    {
        if (isSet)
            widget.add_css_class(name);
        else
            widget.remove_css_class(name);
    }

} // namespace

OnboardingScreenGtk::OnboardingScreenGtk(OnboardingView& view, RunLoop& runLoop)
    : m_view(view)
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/onboarding.ui"))
    , m_logo(logoHeight)
    , m_url(
          get<Gtk::Box>("url"), [&view] { return view.urlField(); }, runLoop)
{
    fillIn();
    makeDots();
    connect();
    refresh();
}

void OnboardingScreenGtk::fillIn(const char* label, std::string_view text)
{
    get<Gtk::Label>(label).set_text(std::string(text));
}

void OnboardingScreenGtk::fillIn()
{
    get<Gtk::Box>("logo").append(m_logo.widget());
    fillIn("title", OnboardingView::title);
    fillIn("purpose", OnboardingView::purpose);
    fillIn("invitation", OnboardingView::invitation);

    fillIn("accessibility-heading", OnboardingView::accessibilityCaption.heading);
    fillIn("accessibility-help", OnboardingView::accessibilityCaption.help);
    fillIn("relaunch-note", OnboardingView::relaunchNote);

    fillIn("gesture-heading", OnboardingView::gestureHeading);
    fillIn("before-keys", OnboardingView::gestureBeforeKeys);
    get<Gtk::Box>("gesture-line").append(m_keyCaps.widget());
    fillIn("after-keys", OnboardingView::gestureAfterKeys);
    get<Gtk::Box>("practice").append(m_practiceBar.widget());

    fillIn("first-kiosk-heading", OnboardingView::firstKioskCaption.heading);
    fillIn("first-kiosk-help", OnboardingView::firstKioskCaption.help);
}

void OnboardingScreenGtk::makeDots()
{
    for (int step = 0; step <= OnboardingView::lastStep; ++step) {
        auto& dot = *Gtk::make_managed<Gtk::Box>();
        dot.add_css_class("dot");
        get<Gtk::Box>("dots").append(dot);
    }
}

void OnboardingScreenGtk::connect(
    const char* button, std::string_view title, void (OnboardingView::*action)())
{
    auto& asked = get<Gtk::Button>(button);
    asked.set_label(std::string(title));
    asked.signal_clicked().connect([this, action] { (m_view.*action)(); });
}

void OnboardingScreenGtk::connect()
{
    connect("guide-link", OnboardingView::guideLink, &OnboardingView::openSetupGuide);
    get<Gtk::Widget>("guide-link").set_tooltip_text(std::string(OnboardingView::guideHelp));
    connect(
        "open-settings", OnboardingView::openSettingsTitle, &OnboardingView::openSystemSettings);
    connect("relaunch", OnboardingView::relaunchTitle, &OnboardingView::relaunch);
    connect("back", OnboardingView::backTitle, &OnboardingView::goBack);
    connect("later", OnboardingView::setUpLaterTitle, &OnboardingView::setUpLater);
    connect("primary", m_view.primaryTitle(), &OnboardingView::goOn);

    m_observations = m_view.observe([this] { refresh(); });
    widget().signal_map().connect([this] {
        m_view.appear();
        focusStep();
    });
    widget().signal_unmap().connect([this] { m_view.disappear(); });
}

void OnboardingScreenGtk::refresh()
{
    refreshPermission();
    refreshPractice();
    m_url.update();
    auto& primary = get<Gtk::Button>("primary");
    primary.set_label(std::string(m_view.primaryTitle()));
    primary.set_sensitive(m_view.isPrimaryEnabled());
    get<Gtk::Widget>("back").set_visible(m_view.showsBack());
    get<Gtk::Widget>("later").set_visible(m_view.showsSetUpLater());
    if (m_shownStep != m_view.step())
        refreshStep();
}

void OnboardingScreenGtk::refreshPermission()
{
    fillIn("badge", m_view.badge());
    setStyle(get<Gtk::Widget>("badge"), "granted", m_view.isTrusted());
}

void OnboardingScreenGtk::refreshPractice()
{
    m_practiceBar.update(m_view.practiceBar());
    m_practiceBar.setShowsKeyCaps(m_view.practiceShowsKeyCaps());
}

void OnboardingScreenGtk::refreshStep()
{
    m_shownStep = m_view.step();
    get<Gtk::Stack>("steps").set_visible_child(std::to_string(*m_shownStep));
    auto& dots = get<Gtk::Widget>("dots");
    auto* dot = dots.get_first_child();
    for (int step = 0; dot; ++step, dot = dot->get_next_sibling())
        setStyle(*dot, "current", step == *m_shownStep);
    gtk_accessible_update_property(GTK_ACCESSIBLE(dots.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL,
        m_view.progressName().c_str(), -1);
    focusStep();
}

void OnboardingScreenGtk::focusStep()
{
    if (m_view.step() == OnboardingView::firstKiosk)
        m_url.focus();
    else if (m_view.isPrimaryEnabled())
        get<Gtk::Widget>("primary").grab_focus();
    else
        get<Gtk::Widget>("open-settings").grab_focus();
}

} // namespace quillox
