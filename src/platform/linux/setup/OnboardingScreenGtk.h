#pragma once

#include "platform/linux/gtk/LogoGtk.h"
#include "platform/linux/setup/KeyCapsGtk.h"
#include "platform/linux/setup/SealBarGtk.h"
#include "platform/linux/setup/TextBoxGtk.h"
#include "support/Handle.h"
#include "ui/OnboardingView.h"

#include <gtkmm/builder.h>
#include <gtkmm/button.h>
#include <gtkmm/widget.h>
#include <optional>
#include <vector>

namespace quillox {

/// Shows the first-run guide. With each step the keyboard goes to what is to be done there.
class OnboardingScreenGtk final {
public:
    OnboardingScreenGtk(OnboardingView&, RunLoop&);

    Gtk::Widget& widget() { return get<Gtk::Widget>("card"); }

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn();
    void fillIn(const char* label, std::string_view text);
    void makeDots();
    void connect();
    void connect(const char* button, std::string_view title, void (OnboardingView::*action)());
    void refresh();
    void refreshPermission();
    void refreshPractice();
    void refreshStep();
    void focusStep();

    OnboardingView& m_view;
    Glib::RefPtr<Gtk::Builder> m_builder;
    LogoGtk m_logo;
    KeyCapsGtk m_keyCaps;
    SealBarGtk m_practiceBar;
    TextBoxGtk m_url;
    std::optional<int> m_shownStep;
    std::vector<Handle> m_observations;
};

} // namespace quillox
