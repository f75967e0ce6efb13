#pragma once

#include "platform/linux/gtk/LogoGtk.h"
#include "platform/linux/setup/OperatorBelowGtk.h"
#include "platform/linux/setup/OperatorSourceGtk.h"
#include "platform/linux/setup/RememberedFocus.h"
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

    void connect();
    void addBelow();

    void refresh();
    void refreshEnabled();
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
    std::vector<std::unique_ptr<ToggleGtk>> m_toggles;
    guint m_frames = 0; ///< Those before there is a lower part.
    std::unique_ptr<OperatorBelowGtk> m_below;
    std::unique_ptr<UsageSheetGtk> m_sheet;
    RememberedFocus m_focus;
    bool m_isThere = false;
    bool m_wasThere = false; ///< From then on, the keyboard stays where it was.
    sigc::connection m_focusChanges;
    std::vector<sigc::connection> m_connections;
    std::vector<Handle> m_observations;
};

} // namespace quillox
