#pragma once

#include "platform/linux/gtk/LogoGtk.h"
#include "platform/linux/setup/ChoicesGtk.h"
#include "platform/linux/setup/KeyCapsGtk.h"
#include "platform/linux/setup/OperatorSourceGtk.h"
#include "platform/linux/setup/RememberedFocus.h"
#include "platform/linux/setup/SealBarGtk.h"
#include "platform/linux/setup/ToggleGtk.h"
#include "platform/linux/setup/UsageSheetGtk.h"
#include "ui/OperatorView.h"

#include <gtkmm/overlay.h>
#include <gtkmm/window.h>
#include <memory>
#include <sigc++/connection.h>
#include <vector>

namespace quillox {

/// The operator's screen: one scrolling column of settings with the seal block at its foot, and
/// over it the usage sheet. The view appears and disappears with the widget, and outlives this.
class OperatorScreenGtk final {
public:
    OperatorScreenGtk(OperatorView&, RunLoop&);
    ~OperatorScreenGtk();
    OperatorScreenGtk(const OperatorScreenGtk&) = delete;
    OperatorScreenGtk& operator=(const OperatorScreenGtk&) = delete;

    /// Whoever shows it takes it out of its parent before this goes.
    Gtk::Widget& widget() { return get<Gtk::Widget>("screen"); }

private:
    template <typename Widget> Widget& get(const char* id) const
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void addCaption(const char* id, const Caption&, const char* controlId = nullptr);
    void addToggles();
    void addChoices();
    void addPassword();
    void addButtons();
    void addSealBlock();
    void connect();
    void showBelow();

    void refresh();
    void refreshEnabled();
    void refreshMenus();
    void refreshPassword();
    void refreshSheet();
    void scrollToFocus();
    void setThere(bool isThere);

    OperatorView& m_view;
    OperatorForm& m_form;
    RunLoop& m_runLoop;
    Glib::RefPtr<Gtk::Builder> m_builder;
    LogoGtk m_logo { OperatorView::logoHeight };
    OperatorSourceGtk m_source;
    OperatorDomainsGtk m_domains;
    std::vector<std::unique_ptr<CaptionGtk>> m_captions;
    std::vector<std::unique_ptr<ToggleGtk>> m_toggles;
    RadioGroupGtk<NavPosition> m_position;
    RadioGroupGtk<NotchBarColor> m_barColor;
    ChoiceMenuGtk m_display;
    ChoiceMenuGtk m_idleReset;
    TextBoxGtk m_password;
    bool m_showsPassword = false;
    SymbolGtk* m_eye = nullptr;
    KeyCapsGtk m_keyCaps;
    SealBarGtk m_sealBar;
    std::unique_ptr<UsageSheetGtk> m_sheet;
    RememberedFocus m_focus;
    bool m_isThere = false;
    bool m_wasThere = false; ///< From then on, the keyboard stays where it was.
    sigc::connection m_focusChanges;
    std::vector<sigc::connection> m_connections;
    std::vector<Handle> m_observations;
};

} // namespace quillox
