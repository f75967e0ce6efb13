#pragma once

#include "platform/linux/setup/ChoicesGtk.h"
#include "platform/linux/setup/KeyCapsGtk.h"
#include "platform/linux/setup/SealBarGtk.h"
#include "platform/linux/setup/TextBoxGtk.h"
#include "platform/linux/setup/ToggleGtk.h"
#include "ui/OperatorView.h"

#include <gtkmm/builder.h>
#include <memory>
#include <vector>

namespace quillox {

class SymbolGtk;

/// The lower part of the operator's screen, from the bar of buttons to the seal block and the
/// footer.
class OperatorBelowGtk final {
public:
    OperatorBelowGtk(OperatorView&, RunLoop&);
    OperatorBelowGtk(const OperatorBelowGtk&) = delete;
    OperatorBelowGtk& operator=(const OperatorBelowGtk&) = delete;

    Gtk::Widget& widget() { return get<Gtk::Widget>("below"); }

    /// Whoever keeps them keeps the widgets alive beyond this.
    Glib::RefPtr<Gtk::Builder> widgets() const { return m_builder; }

    void refresh();
    void refreshSealBar() { m_sealBar.update(m_view.sealAction()); }

private:
    template <typename Widget> Widget& get(const char* id) const
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void addCaption(const char* id, const Caption&, const char* controlId = nullptr);
    void addNavBar();
    void addChoices();
    void addPassword();
    void addButtons();
    void addSealBlock();
    void refreshMenus();
    void refreshPassword();

    OperatorView& m_view;
    OperatorForm& m_form;
    Glib::RefPtr<Gtk::Builder> m_builder;
    std::vector<std::unique_ptr<CaptionGtk>> m_captions;
    std::vector<std::unique_ptr<ToggleGtk>> m_toggles;
    RadioGroupGtk<NavPosition> m_position;
    RadioGroupGtk<NotchBarColor> m_barColor;
    ChoiceMenuGtk m_display;
    ChoiceMenuGtk m_idleReset;
    TextBoxGtk m_password;
    bool m_showsPassword;
    SymbolGtk* m_eye = nullptr;
    KeyCapsGtk m_keyCaps;
    SealBarGtk m_sealBar;
};

} // namespace quillox
