#pragma once

#include "platform/linux/gtk/WindowPlacement.h"
#include "platform/linux/system/SessionInhibitor.h"
#include "ports/Application.h"

#include <functional>
#include <gtkmm/application.h>
#include <gtkmm/window.h>
#include <vector>

namespace quillox {

/// This application among the windows of the session. It lives without a window of its own for as
/// long as its main loop runs.
class ApplicationGtk final : public Application {
public:
    ApplicationGtk(Glib::RefPtr<Gtk::Application>, WindowPlacement&, SystemLog&);
    ~ApplicationGtk() override;

    PresentationOptions presentationOptions() const override { return m_options; }
    void setPresentationOptions(PresentationOptions) override;
    void activate(bool ignoringOthers) override;
    void bringVisibleWindowsForward() override;
    void endTextEditing() override;
    void terminate() override;

    /// A window of the setup; its closing is refused while the options say so.
    void addWindow(Gtk::Window&);

    /// A window that the setup opened beside its own: it is closed as soon as a run begins.
    void addSideWindow(Gtk::Window& window) { m_sideWindows.push_back(&window); }
    void removeSideWindow(Gtk::Window& window) { std::erase(m_sideWindows, &window); }

    /// The setup's window; none before it is made.
    Gtk::Window* setupWindow() const { return m_windows.empty() ? nullptr : m_windows.front(); }

    /// A window of a run; while there is one, the setup's windows are not brought before it.
    void addSealedWindow(Gtk::Window&);
    void removeSealedWindow(Gtk::Window&);
    const std::vector<Gtk::Window*>& sealedWindows() const { return m_sealedWindows; }

    /// The visible window of a run that may have the keyboard; none without a run.
    Gtk::Window* keyWindow() const;

    /// Called each time a window of a run has been shown.
    std::function<void()> onSealedWindowShown;

    /// Brings the setup's windows to the front, with a token of the launcher that asked for it; it
    /// may be empty.
    void activateAllWindows(const std::string& token);

private:
    void inhibitSessionEnd(bool inhibit);

    Glib::RefPtr<Gtk::Application> m_application;
    WindowPlacement& m_placement;
    // Each by itself, since the login manager may refuse the one and grant the other.
    SessionInhibitor m_sessionEnd;
    SessionInhibitor m_powerKeys;
    SessionInhibitor m_rebootKey; ///< Which older login managers do not know.
    guint m_sessionCookie = 0;
    PresentationOptions m_options = PresentationOptions::Default;
    std::vector<Gtk::Window*> m_windows;
    std::vector<Gtk::Window*> m_sideWindows;
    std::vector<Gtk::Window*> m_sealedWindows;
};

} // namespace quillox
