#include "platform/linux/gtk/ApplicationGtk.h"

#include "platform/linux/gtk/Toplevel.h"

#include <algorithm>

namespace quillox {

namespace {

    constexpr auto sealedReason = "Quillox kiosk is sealed";

} // namespace

ApplicationGtk::ApplicationGtk(
    Glib::RefPtr<Gtk::Application> application, WindowPlacement& placement, SystemLog& log)
    : m_application(std::move(application))
    , m_placement(placement)
    , m_sessionEnd("shutdown:sleep", sealedReason, log)
    , m_powerKeys("handle-power-key:handle-suspend-key:handle-hibernate-key:handle-lid-switch",
          sealedReason, log)
    , m_rebootKey("handle-reboot-key", sealedReason, log)
{
    m_application->hold();
}

ApplicationGtk::~ApplicationGtk()
{
    inhibitSessionEnd(false);
    m_application->release();
}

void ApplicationGtk::setPresentationOptions(PresentationOptions options)
{
    m_options = options;
    inhibitSessionEnd(contains(options, PresentationOptions::DisableSessionTermination));
}

void ApplicationGtk::inhibitSessionEnd(bool inhibit)
{
    m_sessionEnd.setEngaged(inhibit);
    m_powerKeys.setEngaged(inhibit);
    m_rebootKey.setEngaged(inhibit);
    if (inhibit && m_sessionCookie == 0) {
        constexpr auto what = GTK_APPLICATION_INHIBIT_LOGOUT | GTK_APPLICATION_INHIBIT_SWITCH
            | GTK_APPLICATION_INHIBIT_SUSPEND;
        m_sessionCookie = gtk_application_inhibit(m_application->gobj(), nullptr,
            static_cast<GtkApplicationInhibitFlags>(what), sealedReason);
    } else if (!inhibit && m_sessionCookie != 0) {
        gtk_application_uninhibit(m_application->gobj(), std::exchange(m_sessionCookie, 0));
    }
}

void ApplicationGtk::activate(bool)
{
    // What is key takes the keyboard as it is ordered front; there is no further notion of an
    // active application.
    if (auto* window = keyWindow())
        m_placement.takeKeyboard(*window);
}

Gtk::Window* ApplicationGtk::keyWindow() const
{
    const auto found = std::ranges::find_if(m_sealedWindows,
        [](auto* window) { return window->get_visible() && window->get_focusable(); });
    return found == m_sealedWindows.end() ? nullptr : *found;
}

void ApplicationGtk::bringVisibleWindowsForward()
{
    for (auto* window : m_windows) {
        if (window->get_visible())
            m_placement.present(*window);
    }
}

void ApplicationGtk::activateAllWindows(const std::string& token)
{
    for (auto* window : m_windows) {
        if (!token.empty())
            gtk_window_set_startup_id(window->gobj(), token.c_str());
        m_placement.present(*window);
    }
}

void ApplicationGtk::endTextEditing()
{
    for (auto* window : m_windows) {
        if (window->is_active())
            gtk_window_set_focus(window->gobj(), nullptr);
    }
}

void ApplicationGtk::terminate()
{
    m_application->quit();
}

void ApplicationGtk::addWindow(Gtk::Window& window)
{
    m_windows.push_back(&window);
    refuseInspector(window);
    window.signal_close_request().connect(
        [this] { return contains(m_options, PresentationOptions::DisableForceQuit); }, false);
}

void ApplicationGtk::addSealedWindow(Gtk::Window& window)
{
    for (auto* side : std::vector(m_sideWindows))
        side->close();
    m_sealedWindows.push_back(&window);
    refuseInspector(window);
    window.signal_map().connect([this] {
        if (onSealedWindowShown)
            onSealedWindowShown();
    });
}

void ApplicationGtk::removeSealedWindow(Gtk::Window& window)
{
    std::erase(m_sealedWindows, &window);
}

} // namespace quillox
