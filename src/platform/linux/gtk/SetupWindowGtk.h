#pragma once

#include "platform/linux/gtk/SealOverlaysGtk.h"
#include "platform/linux/gtk/SealPromptGtk.h"
#include "support/Handle.h"
#include "ui/AutoStartCountdownOverlay.h"
#include "ui/SetupView.h"

#include <gtkmm/builder.h>
#include <gtkmm/window.h>
#include <memory>
#include <vector>

namespace quillox {

/// Shows the setup screen and, over it, the countdown, the progress of the gesture and the prompt.
class SetupWindowGtk final {
public:
    SetupWindowGtk(SetupView&, AutoStartCountdownOverlay&, RunLoop&, const char* title);

    Gtk::Window& window() { return m_window; }

private:
    template <typename Widget> Widget& get(const char* id)
    {
        return *m_builder->get_widget<Widget>(id);
    }

    void fillIn();
    void connectSetup();
    void connectCountdown();
    void connectGesture();
    void refresh();
    void refreshCountdown();
    void refreshGesture();
    void refreshPrompt();

    SetupView& m_view;
    AutoStartCountdownOverlay& m_countdown;
    RunLoop& m_runLoop;
    Glib::RefPtr<Gtk::Builder> m_builder;
    Gtk::Window m_window;
    SealHoldOverlayGtk m_holdOverlay;
    SealHintOverlayGtk m_hintOverlay;
    SealReleaseOverlayGtk m_releaseOverlay;
    std::unique_ptr<SealPromptGtk> m_prompt;
    std::vector<Handle> m_observations;
    std::vector<Handle> m_gestureObservations;
};

} // namespace quillox
