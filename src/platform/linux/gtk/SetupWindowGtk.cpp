#include "platform/linux/gtk/SetupWindowGtk.h"

#include <gtkmm/button.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/entry.h>
#include <gtkmm/gestureclick.h>
#include <gtkmm/label.h>
#include <gtkmm/overlay.h>
#include <gtkmm/shortcutcontroller.h>
#include <gtkmm/stylecontext.h>

namespace quillox {

namespace {

    void setAccessibleName(Gtk::Widget& widget, const char* name)
    {
        gtk_accessible_update_property(
            GTK_ACCESSIBLE(widget.gobj()), GTK_ACCESSIBLE_PROPERTY_LABEL, name, -1);
    }

} // namespace

SetupWindowGtk::SetupWindowGtk(
    SetupView& view, AutoStartCountdownOverlay& countdown, RunLoop& runLoop, const char* title)
    : m_view(view)
    , m_countdown(countdown)
    , m_runLoop(runLoop)
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/setup-window.ui"))
{
    auto style = Gtk::CssProvider::create();
    style->load_from_resource("/com/orvendal/quillox/quillox.css");
    Gtk::StyleContext::add_provider_for_display(
        m_window.get_display(), style, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);

    m_window.set_title(title);
    m_window.set_child(get<Gtk::Widget>("content"));
    m_window.set_default_size(720, 560);
    fillIn();
    connectSetup();
    connectCountdown();
    connectGesture();
    refresh();
}

void SetupWindowGtk::fillIn()
{
    get<Gtk::Label>("heading").set_text(SetupView::heading);
    get<Gtk::Label>("help").set_text(SetupView::help);
    get<Gtk::Button>("choose").set_label(SetupView::chooseTitle);
    get<Gtk::Button>("clear").set_label(SetupView::clearTitle);
    get<Gtk::Label>("exit-help").set_text(SetupView::exitHelp);
    get<Gtk::Label>("countdown-hint").set_text(AutoStartCountdownOverlay::hint);
    get<Gtk::Button>("countdown-cancel").set_label(AutoStartCountdownOverlay::cancelTitle);
    setAccessibleName(get<Gtk::Entry>("address"), "Website address");
    setAccessibleName(get<Gtk::Button>("seal"), SetupView::sealName);
}

void SetupWindowGtk::connectSetup()
{
    auto& address = get<Gtk::Entry>("address");
    address.signal_changed().connect([this, &address] { m_view.setAddress(address.get_text()); });
    get<Gtk::Button>("choose").signal_clicked().connect([this] { m_view.chooseSource(); });
    get<Gtk::Button>("clear").signal_clicked().connect([this] { m_view.clearLocalSource(); });
    get<Gtk::Button>("seal").signal_clicked().connect([this] { m_view.seal(); });
    m_observations = m_view.observe([this] { refresh(); });
}

void SetupWindowGtk::connectCountdown()
{
    const auto cancel = [this] { m_countdown.cancel(); };
    get<Gtk::Button>("countdown-cancel").signal_clicked().connect(cancel);
    auto click = Gtk::GestureClick::create();
    click->signal_released().connect([cancel](int, double, double) { cancel(); });
    get<Gtk::Widget>("countdown").add_controller(click);

    auto shortcuts = Gtk::ShortcutController::create();
    shortcuts->set_scope(Gtk::ShortcutScope::MANAGED);
    shortcuts->add_shortcut(Gtk::Shortcut::create(Gtk::KeyvalTrigger::create(GDK_KEY_Escape),
        Gtk::CallbackAction::create([this, cancel](Gtk::Widget&, const Glib::VariantBase&) {
            const bool isShown = m_countdown.isShown();
            if (isShown)
                cancel();
            return isShown;
        })));
    m_window.add_controller(shortcuts);
}

void SetupWindowGtk::connectGesture()
{
    auto& content = get<Gtk::Overlay>("content");
    for (SealPanelGtk* panel :
        std::initializer_list<SealPanelGtk*> { &m_holdOverlay, &m_hintOverlay, &m_releaseOverlay })
        content.add_overlay(panel->widget());
    m_window.signal_map().connect([this] { m_view.appear(); });
    m_window.signal_unmap().connect([this] { m_view.disappear(); });
    m_gestureObservations = m_view.observeGesture([this] { refreshGesture(); });
}

void SetupWindowGtk::refreshGesture()
{
    m_holdOverlay.update(m_view.holdOverlay());
    m_hintOverlay.update(m_view.hintOverlay());
    m_releaseOverlay.setShown(m_view.isWaitingForRelease());
    refreshPrompt();
}

void SetupWindowGtk::refreshPrompt()
{
    auto* prompt = m_view.prompt();
    if (!!prompt == !!m_prompt)
        return;
    if (!prompt) {
        m_prompt.reset();
        get<Gtk::Button>("seal").grab_focus();
        return;
    }
    m_prompt = std::make_unique<SealPromptGtk>(*prompt, m_runLoop);
    get<Gtk::Overlay>("content").add_overlay(m_prompt->widget());
}

void SetupWindowGtk::refresh()
{
    auto& address = get<Gtk::Entry>("address");
    if (address.get_text().raw() != m_view.address())
        address.set_text(m_view.address());
    address.set_visible(!m_view.isLocal());
    auto& folder = get<Gtk::Label>("folder");
    folder.set_visible(m_view.isLocal());
    folder.set_text(m_view.folder());
    get<Gtk::Label>("source-label")
        .set_text(m_view.isLocal() ? SetupView::folderLabel : SetupView::addressLabel);
    get<Gtk::Button>("clear").set_visible(m_view.isLocal());

    auto& seal = get<Gtk::Button>("seal");
    seal.set_label(m_view.sealTitle());
    seal.set_sensitive(m_view.canSeal());

    const bool isFree = m_view.isEnabled() && !m_view.prompt() && !m_countdown.isShown();
    if (!isFree && get<Gtk::Widget>("setup").get_sensitive())
        m_window.unset_focus(); // An entry must lose the keyboard before it goes dim.
    get<Gtk::Widget>("setup").set_sensitive(isFree);
    refreshCountdown();
}

void SetupWindowGtk::refreshCountdown()
{
    auto& overlay = get<Gtk::Widget>("countdown");
    const bool wasCounting = overlay.get_visible();
    const bool isCounting = m_countdown.isShown();
    overlay.set_visible(isCounting);
    if (!isCounting)
        return;
    get<Gtk::Label>("countdown-title").set_text(m_countdown.title());
    if (!wasCounting)
        get<Gtk::Button>("countdown-cancel").grab_focus();
}

} // namespace quillox
