#pragma once

#include "app/QuilloxApp.h"
#include "platform/linux/gtk/SealOverlaysGtk.h"
#include "platform/linux/gtk/SealPromptGtk.h"
#include "platform/linux/setup/CountdownOverlayGtk.h"
#include "platform/linux/setup/FinishingScreenGtk.h"
#include "platform/linux/setup/OnboardingScreenGtk.h"
#include "platform/linux/setup/OperatorScreenGtk.h"
#include "platform/linux/setup/RememberedFocus.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <gtkmm/overlay.h>
#include <gtkmm/window.h>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

namespace quillox {

class WindowPlacement;

/// The one window of the setup: the screen that the application's state asks for, made anew each
/// time, and over it what the gesture, the password and the countdown have to show.
class SetupWindowGtk final {
public:
    struct Views {
        OnboardingView& onboarding;
        OperatorView& operatorView;
        AutoStartCountdownOverlay& countdown;
    };

    SetupWindowGtk(QuilloxApp&, Views, RunLoop&, WindowPlacement&);
    ~SetupWindowGtk();

    Gtk::Window& window() { return m_window; }

private:
    void loadStyle();
    void layOut();
    void connect();
    void connectKeys();
    void showRootView();
    Gtk::Widget& makeScreen();
    void focusScreen();
    void applySize();
    void refresh();
    void refreshCountdown();
    void refreshGesture();
    void giveBackFocus();

    QuilloxApp& m_app;
    Views m_views;
    RunLoop& m_runLoop;
    WindowPlacement& m_placement;
    Gtk::Window m_window;
    Gtk::Overlay m_scene;
    Gtk::Box m_frame { Gtk::Orientation::VERTICAL };
    Gtk::Box m_page;
    std::variant<std::monostate, OnboardingScreenGtk, FinishingScreenGtk, OperatorScreenGtk>
        m_screen;
    std::optional<RootView> m_shown;
    std::unique_ptr<SealHoldOverlayGtk> m_holdBanner;
    std::unique_ptr<SealHintOverlayGtk> m_hintBanner;
    std::unique_ptr<SealReleaseOverlayGtk> m_releasePanel;
    std::unique_ptr<SealPromptGtk> m_prompt;
    std::unique_ptr<CountdownOverlayGtk> m_countdown;
    RememberedFocus m_focus;
    std::vector<Handle> m_observations;
    std::vector<Handle> m_gestureObservations;
    Lifetime m_lifetime;
};

} // namespace quillox
