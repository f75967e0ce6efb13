#pragma once

#include "platform/linux/setup/CaptionGtk.h"
#include "ui/OperatorForm.h"

#include <gtkmm/builder.h>
#include <gtkmm/switch.h>
#include <gtkmm/togglebutton.h>
#include <memory>
#include <vector>

namespace quillox {

/// What switches one setting.
class ToggleGtk {
public:
    virtual ~ToggleGtk() = default;
    virtual void update() = 0;
};

/// A caption with a switch beside it; a click on the caption switches, too.
class ToggleRowGtk final : public ToggleGtk {
public:
    ToggleRowGtk(Gtk::Box& row, OperatorForm&, const SettingToggle&);

    void update() override;

private:
    OperatorForm& m_form;
    const SettingToggle& m_toggle;
    Gtk::Box m_captionBox { Gtk::Orientation::VERTICAL };
    CaptionGtk m_caption;
    Gtk::Box& m_row;
    Gtk::Switch m_switch;
};

/// A button with a symbol over its name, which stays down while the setting is on.
class ToggleTileGtk final : public ToggleGtk {
public:
    ToggleTileGtk(Gtk::ToggleButton&, OperatorForm&, const SettingToggle&);

    void update() override;

private:
    OperatorForm& m_form;
    const SettingToggle& m_toggle;
    Gtk::ToggleButton& m_button;
};

/// Those of the form's toggles that have a place under their own name among the widgets.
std::vector<std::unique_ptr<ToggleGtk>> makeToggles(
    const Glib::RefPtr<Gtk::Builder>& widgets, OperatorForm&);

} // namespace quillox
