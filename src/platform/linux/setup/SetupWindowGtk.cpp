#include "platform/linux/setup/SetupWindowGtk.h"

#include "app/AppState.h"
#include "platform/linux/gtk/WindowPlacement.h"
#include "ui/FinishingView.h"
#include "ui/OperatorView.h"

#include <algorithm>
#include <gdkmm/display.h>
#include <gdkmm/monitor.h>
#include <gtkmm/centerbox.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/shortcutcontroller.h>
#include <gtkmm/stylecontext.h>
#include <gtkmm/windowcontrols.h>
#include <gtkmm/windowhandle.h>

namespace quillox {

namespace {

    constexpr int handleHeight = 32; ///< A part of the card's own height.
    constexpr int operatorWidth = 720;
    constexpr int operatorHeight = 760; ///< Where the display has room for it.
    constexpr int edge = 8;

    /// Stands for the title bar: what moves the window and closes it, and nothing else.
    Gtk::Widget& makeHandle(bool closesOnly)
    {
        auto& start = *Gtk::make_managed<Gtk::WindowControls>(Gtk::PackType::START);
        auto& end = *Gtk::make_managed<Gtk::WindowControls>(Gtk::PackType::END);
        if (closesOnly) {
            start.set_decoration_layout(":close");
            end.set_decoration_layout(":close");
        }
        auto& ends = *Gtk::make_managed<Gtk::CenterBox>();
        ends.set_start_widget(start);
        ends.set_end_widget(end);
        auto& handle = *Gtk::make_managed<Gtk::WindowHandle>();
        handle.set_child(ends);
        handle.add_css_class("handle");
        return handle;
    }

    /// The window often grows from the place of the card, which is in the middle of the display:
    /// its foot stays on the display then, and it leaves room for panels.
    int heightFor(Gtk::Window& window)
    {
        const auto monitors = window.get_display()->get_monitors();
        const auto first = std::dynamic_pointer_cast<Gdk::Monitor>(monitors->get_object(0));
        Gdk::Rectangle display;
        if (first)
            first->get_geometry(display);
        constexpr int card = OnboardingView::height;
        return std::clamp((display.get_height() + card) / 2 - edge, card, operatorHeight);
    }

} // namespace

SetupWindowGtk::SetupWindowGtk(
    QuilloxApp& app, Views views, RunLoop& runLoop, WindowPlacement& placement)
    : m_app(app)
    , m_views(views)
    , m_runLoop(runLoop)
    , m_placement(placement)
{
    loadStyle();
    layOut();
    connect();
    connectKeys();
    showRootView();
    refresh();
}

SetupWindowGtk::~SetupWindowGtk()
{
    if (m_shown)
        m_page.remove(*m_page.get_first_child());
    m_window.unset_child();
}

void SetupWindowGtk::loadStyle()
{
    auto style = Gtk::CssProvider::create();
    style->load_from_resource("/com/orvendal/quillox/quillox.css");
    Gtk::StyleContext::add_provider_for_display(
        m_window.get_display(), style, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

void SetupWindowGtk::layOut()
{
    m_window.set_title(QuilloxApp::windowTitle);
    m_window.add_css_class("setup-window");
    auto& noTitleBar = *Gtk::make_managed<Gtk::Box>();
    noTitleBar.set_visible(false);
    m_window.set_titlebar(noTitleBar);

    auto& handle = makeHandle(m_placement.fillsScreen());
    handle.set_size_request(-1, handleHeight);
    m_frame.append(handle);
    m_page.set_vexpand(true);
    m_frame.append(m_page);
    m_scene.set_child(m_frame);
    m_window.set_child(m_scene);
}

void SetupWindowGtk::connect()
{
    // The screens are changed from within their own callbacks, and the state in several steps.
    const auto change
        = [this](bool) { m_runLoop.post(m_lifetime.guard([this] { showRootView(); })); };
    m_observations = m_views.operatorView.observe([this] { refresh(); });
    m_observations.push_back(m_app.app().hasOnboarded.observe(change));
    m_observations.push_back(m_app.app().showFinishingScreen.observe(change));
    m_window.signal_map().connect([this] { focusScreen(); });
    m_gestureObservations = m_views.operatorView.observeGesture([this] { refreshGesture(); });
}

void SetupWindowGtk::connectKeys()
{
    auto keys = Gtk::ShortcutController::create();
    keys->set_scope(Gtk::ShortcutScope::MANAGED);
    keys->add_shortcut(Gtk::Shortcut::create(
        Gtk::KeyvalTrigger::create(GDK_KEY_q, Gdk::ModifierType::CONTROL_MASK),
        Gtk::CallbackAction::create([this](Gtk::Widget&, const Glib::VariantBase&) {
            const bool isSetup = !m_app.app().isKioskActive.get();
            if (isSetup)
                m_window.close();
            return isSetup;
        })));
    m_window.add_controller(keys);
}

Gtk::Widget& SetupWindowGtk::makeScreen()
{
    switch (*m_shown) {
    case RootView::Onboarding:
        return m_screen.emplace<OnboardingScreenGtk>(m_views.onboarding, m_runLoop).widget();
    case RootView::Finishing:
        return m_screen.emplace<FinishingScreenGtk>().widget();
    case RootView::Operator:
        break;
    }
    return m_screen.emplace<OperatorScreenGtk>(m_views.operatorView, m_runLoop).widget();
}

void SetupWindowGtk::showRootView()
{
    if (m_shown == m_app.rootView())
        return;
    if (m_shown)
        m_page.remove(*m_page.get_first_child());
    m_shown = m_app.rootView();
    auto& screen = makeScreen();
    screen.set_hexpand(true);
    m_page.append(screen);
    applySize();
    focusScreen();
}

/// A screen may have chosen by itself where the keyboard goes first.
void SetupWindowGtk::focusScreen()
{
    if (!m_window.get_focus())
        m_page.child_focus(Gtk::DirectionType::TAB_FORWARD);
    auto* focus = gtk_window_get_focus(m_window.gobj());
    if (focus && GTK_IS_TEXT(focus))
        gtk_editable_set_position(GTK_EDITABLE(focus), -1); // The next key replaces nothing.
}

void SetupWindowGtk::applySize()
{
    const bool isCard = m_shown != RootView::Operator;
    m_page.set_halign(isCard ? Gtk::Align::CENTER : Gtk::Align::FILL);
    m_page.set_valign(isCard ? Gtk::Align::CENTER : Gtk::Align::FILL);
    m_page.set_size_request(
        isCard ? OnboardingView::width : -1, isCard ? OnboardingView::height - handleHeight : -1);
    if (m_placement.fillsScreen())
        return;
    m_window.set_resizable(!isCard);
    m_window.set_default_size(isCard ? OnboardingView::width : operatorWidth,
        isCard ? OnboardingView::height : heightFor(m_window));
}

void SetupWindowGtk::refresh()
{
    refreshCountdown();
    refreshGesture();
    auto* prompt = m_views.operatorView.launchPrompt();
    if (prompt && !m_prompt) {
        m_focus.take(m_window);
        m_prompt = std::make_unique<SealPromptGtk>(*prompt, m_runLoop);
        m_scene.add_overlay(m_prompt->widget());
    } else if (!prompt && m_prompt) {
        m_prompt.reset();
        giveBackFocus();
    }
}

void SetupWindowGtk::refreshCountdown()
{
    const bool isCounting = m_views.countdown.isShown();
    if (isCounting && !m_countdown) {
        m_focus.take(m_window);
        m_countdown = std::make_unique<CountdownOverlayGtk>(m_views.countdown);
        m_scene.add_overlay(m_countdown->widget());
    } else if (isCounting) {
        m_countdown->update();
    } else if (m_countdown) {
        m_countdown.reset();
        giveBackFocus();
    }
}

/// Each panel is made when it is first shown, which most starts never do.
void SetupWindowGtk::refreshGesture()
{
    const auto ensure = [this]<typename Panel>(std::unique_ptr<Panel>& panel, bool isShown) {
        if (isShown && !panel) {
            panel = std::make_unique<Panel>();
            m_scene.add_overlay(panel->widget());
        }
        return panel.get();
    };
    const auto hold = m_views.operatorView.holdBanner();
    if (auto* banner = ensure(m_holdBanner, hold.isShown())) {
        banner->moveToTop();
        banner->update(hold);
    }
    const auto hint = m_views.operatorView.hintBanner();
    if (auto* banner = ensure(m_hintBanner, hint.isVisible)) {
        banner->moveToTop();
        banner->update(hint);
    }
    const bool isWaiting = m_views.operatorView.isWaitingForRelease();
    if (auto* panel = ensure(m_releasePanel, isWaiting))
        panel->setShown(isWaiting);
}

/// Later, when the screen has been told that it is free again.
void SetupWindowGtk::giveBackFocus()
{
    m_runLoop.post(m_lifetime.guard([this] { m_focus.giveBack(); }));
}

} // namespace quillox
