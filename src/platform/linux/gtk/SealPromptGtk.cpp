#include "platform/linux/gtk/SealPromptGtk.h"

#include <array>
#include <fmt/format.h>
#include <glibmm/main.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/eventcontrollerkey.h>
#include <gtkmm/gestureclick.h>
#include <gtkmm/label.h>

namespace quillox {

SealPromptGtk::SealPromptGtk(SealPrompt& prompt, RunLoop& runLoop)
    : m_prompt(prompt)
    , m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/seal-prompt.ui"))
    , m_field(prompt.field(), runLoop)
    , m_panelStyle(get<Gtk::Widget>("panel"))
    , m_boxStyle(get<Gtk::Widget>("box"))
{
    fillIn();
    showWrong();
    connect();
    connectKeys();
}

SealPromptGtk::~SealPromptGtk()
{
    for (auto& connection : m_connections)
        connection.disconnect();
    widget().unparent();
    // The prompt may end from within an event of one of these widgets.
    Glib::signal_idle().connect_once([widgets = m_builder] {});
}

void SealPromptGtk::fillIn()
{
    const auto& question = m_prompt.question();
    get<Gtk::Label>("title").set_text(question.title);
    get<Gtk::Label>("message").set_text(question.message);
    get<Gtk::Label>("field-label").set_text(SealPrompt::fieldLabel);
    get<Gtk::Button>("confirm").set_label(question.confirmLabel);
    get<Gtk::Button>("cancel").set_label(SealPrompt::cancelLabel);
    get<Gtk::Box>("box").append(m_field.widget());
    get<Gtk::Widget>("panel").set_size_request(static_cast<int>(SealPrompt::width), -1);
    m_panelStyle.set(fmt::format("box {{ padding: {}px; }}", SealPrompt::padding));
}

void SealPromptGtk::connect()
{
    auto& scrim = widget();
    m_connections.push_back(scrim.signal_map().connect([this] { m_field.focus(); }));
    m_connections.push_back(
        get<Gtk::Button>("confirm").signal_clicked().connect([this] { m_prompt.submit(); }));
    m_connections.push_back(
        get<Gtk::Button>("cancel").signal_clicked().connect([this] { m_prompt.cancel(); }));
    auto click = Gtk::GestureClick::create();
    m_connections.push_back(
        click->signal_pressed().connect([this](int, double, double) { m_field.focus(); }));
    get<Gtk::Widget>("box").add_controller(click);
    m_observations.push_back(
        m_prompt.password.observe([this](const auto&) { m_field.update(m_prompt.field()); }));
    m_observations.push_back(m_prompt.wrong.observe([this](const auto&) { showWrong(); }));
}

void SealPromptGtk::connectKeys()
{
    auto keys = Gtk::EventControllerKey::create();
    keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    m_connections.push_back(keys->signal_key_pressed().connect(
        [this](unsigned symbol, unsigned, Gdk::ModifierType state) {
            // The S of the gesture may still be held; a field takes it for a letter.
            const bool isGesture = (state & Gdk::ModifierType::SUPER_MASK) != Gdk::ModifierType {};
            return isGesture || handleKey(symbol);
        },
        false));
    widget().add_controller(keys);
}

bool SealPromptGtk::handleKey(unsigned symbol)
{
    switch (symbol) {
    case GDK_KEY_Escape:
        m_prompt.cancel(); // Which may destroy this.
        return true;
    case GDK_KEY_Tab:
    case GDK_KEY_KP_Tab:
        moveFocus(1);
        return true;
    case GDK_KEY_ISO_Left_Tab:
        moveFocus(-1);
        return true;
    case GDK_KEY_Return:
    case GDK_KEY_KP_Enter:
    case GDK_KEY_ISO_Enter:
        if (m_field.isFocused())
            return false; // Its input method may need the key; otherwise it submits.
        m_prompt.submit();
        return true;
    default:
        return false;
    }
}

void SealPromptGtk::moveFocus(int step)
{
    const std::array stops { &m_field.widget(), &get<Gtk::Widget>("confirm"),
        &get<Gtk::Widget>("cancel") };
    int current = 0;
    while (current < 2 && !stops[current]->is_focus())
        ++current;
    const auto next = (current + step + 3) % 3;
    if (next == 0)
        m_field.focus();
    else
        stops[next]->grab_focus();
}

void SealPromptGtk::showWrong()
{
    const bool isWrong = m_prompt.wrong.get();
    m_boxStyle.set(fmt::format("box {{ border: {}px solid {}; }}", SealPrompt::borderWidth,
        cssColor(isWrong ? SealPrompt::wrongBorderColor : SealPrompt::borderColor)));
    gtk_accessible_update_state(GTK_ACCESSIBLE(m_field.widget().gobj()),
        GTK_ACCESSIBLE_STATE_INVALID,
        isWrong ? GTK_ACCESSIBLE_INVALID_TRUE : GTK_ACCESSIBLE_INVALID_FALSE, -1);
}

} // namespace quillox
