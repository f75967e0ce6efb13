#include "platform/linux/lock/PowerAssertionsLinux.h"

#include "platform/linux/lock/BusAddress.h"
#include "platform/linux/lock/RestoreNote.h"

#include <utility>

namespace quillox {

PowerAssertionsLinux::PowerAssertionsLinux(
    RestoreNote& note, Gtk::Application& application, KeyWindow keyWindow, SystemLog& log)
    : m_application(application)
    , m_keyWindow(std::move(keyWindow))
    , m_log(log)
    , m_screenSaver(log)
    , m_server(DisplayPowerX11::make(gdk_display_get_default(), note))
{
}

PowerAssertionsLinux::~PowerAssertionsLinux()
{
    disengage();
}

void PowerAssertionsLinux::restoreAfterCrash()
{
    if (m_server)
        m_server->restoreAfterCrash();
}

PowerAssertions::Creation PowerAssertionsLinux::create(
    std::string_view type, std::uint32_t level, std::string_view name)
{
    if (type != preventDisplaySleep || level == 0)
        return { unsupported, 0 };
    if (m_held.empty() && !engage(std::string(name))) {
        disengage();
        return { unsupported, 0 };
    }
    m_held.insert(++m_lastIdentifier);
    return { 0, m_lastIdentifier };
}

void PowerAssertionsLinux::release(Identifier identifier)
{
    if (m_held.erase(identifier) > 0 && m_held.empty())
        disengage();
}

bool PowerAssertionsLinux::engage(const std::string& name)
{
    bool isAnyHeld = m_screenSaver.inhibit(name);
    if (isBusReachable(G_BUS_TYPE_SYSTEM)) {
        m_loginManager.emplace("idle", name, m_log).setEngaged(true);
        isAnyHeld = true;
    }
    isAnyHeld = (m_server && m_server->keepOn()) || isAnyHeld;
    return inhibitByToolkit(name) || isAnyHeld;
}

bool PowerAssertionsLinux::inhibitByToolkit(const std::string& name)
{
    if (!m_application.is_registered())
        return false;
    auto* window = m_keyWindow ? m_keyWindow() : nullptr;
    m_toolkitCookie = gtk_application_inhibit(m_application.gobj(),
        window ? window->gobj() : nullptr, GTK_APPLICATION_INHIBIT_IDLE, name.c_str());
    return m_toolkitCookie != 0;
}

void PowerAssertionsLinux::disengage()
{
    m_loginManager.reset();
    m_screenSaver.release();
    if (m_server)
        m_server->release();
    if (m_toolkitCookie != 0)
        gtk_application_uninhibit(m_application.gobj(), std::exchange(m_toolkitCookie, 0));
}

} // namespace quillox
