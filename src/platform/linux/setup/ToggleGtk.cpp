#include "platform/linux/setup/ToggleGtk.h"

#include "platform/linux/gtk/SymbolGtk.h"
#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/setup/AccessibleGtk.h"

#include <gtkmm/gestureclick.h>

namespace quillox {

namespace {

    constexpr double symbolSize = 24;

} // namespace

ToggleRowGtk::ToggleRowGtk(Gtk::Box& row, OperatorForm& form, const SettingToggle& toggle)
    : m_form(form)
    , m_toggle(toggle)
    , m_caption(m_captionBox, toggle.caption)
    , m_row(row)
{
    m_captionBox.add_css_class("caption-box");
    m_captionBox.set_hexpand(true);
    m_captionBox.set_valign(Gtk::Align::CENTER);
    m_row.append(m_captionBox);
    m_switch.set_valign(Gtk::Align::CENTER);
    m_row.append(m_switch);
    m_caption.nameControl(m_switch);
    update();

    m_switch.property_active().signal_changed().connect(
        [this] { m_form.setOn(m_toggle, m_switch.get_active()); });
    auto click = Gtk::GestureClick::create();
    click->signal_released().connect([this](int, double, double) {
        if (m_switch.is_sensitive())
            m_switch.set_active(!m_switch.get_active());
    });
    m_captionBox.add_controller(click);
}

void ToggleRowGtk::update()
{
    const bool canChange = m_form.canChange(m_toggle);
    // A switch that still moves says what it was before, and would stay there if it were set to
    // that.
    if (m_switch.get_active() != m_form.isOn(m_toggle))
        m_switch.set_active(m_form.isOn(m_toggle));
    m_switch.set_sensitive(canChange);
    m_caption.setHelp(m_form.help(m_toggle));
    setStyleClass(m_row, "faded", !canChange);
}

ToggleTileGtk::ToggleTileGtk(
    Gtk::ToggleButton& button, OperatorForm& form, const SettingToggle& toggle)
    : m_form(form)
    , m_toggle(toggle)
    , m_button(button)
{
    auto& content = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    content.append(*Gtk::make_managed<SymbolGtk>(toggle.symbol, symbolSize));
    content.append(*Gtk::make_managed<Gtk::Label>(std::string(toggle.caption.heading)));
    m_button.set_child(content);
    setAccessibleName(m_button, toggle.caption.heading);
    update();
    m_button.signal_toggled().connect([this] { m_form.setOn(m_toggle, m_button.get_active()); });
}

void ToggleTileGtk::update()
{
    m_button.set_active(m_form.isOn(m_toggle));
}

std::vector<std::unique_ptr<ToggleGtk>> makeToggles(
    const Glib::RefPtr<Gtk::Builder>& widgets, OperatorForm& form)
{
    std::vector<std::unique_ptr<ToggleGtk>> toggles;
    for (const auto& toggle : OperatorForm::toggles) {
        const auto* id = toggle.name.data(); // A literal, which ends where it should.
        if (!gtk_builder_get_object(widgets->gobj(), id))
            continue;
        if (toggle.symbol.empty())
            toggles.push_back(
                std::make_unique<ToggleRowGtk>(*widgets->get_widget<Gtk::Box>(id), form, toggle));
        else
            toggles.push_back(std::make_unique<ToggleTileGtk>(
                *widgets->get_widget<Gtk::ToggleButton>(id), form, toggle));
    }
    return toggles;
}

} // namespace quillox
