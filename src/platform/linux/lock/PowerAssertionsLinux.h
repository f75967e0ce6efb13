#pragma once

#include "platform/linux/lock/DisplayPowerX11.h"
#include "platform/linux/lock/ScreenSaverService.h"
#include "platform/linux/system/SessionInhibitor.h"
#include "ports/PowerAssertions.h"

#include <functional>
#include <gtkmm/application.h>
#include <gtkmm/window.h>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace quillox {

class RestoreNote;
class SystemLog;

/// Keeps the display on by every route that the session offers, for as long as there is an
/// assertion. Each route ends by itself when the process dies: the login manager watches the file
/// descriptor that it handed out, the desktop's screen saver and session manager watch the bus
/// connection, an X server ends what a closed connection asked for, a compositor what its surface
/// wished. Only an X server's power saving would stay off; see DisplayPowerX11.
class PowerAssertionsLinux final : public PowerAssertions {
public:
    using KeyWindow = std::function<Gtk::Window*()>;

    /// `result` for a type of assertion that is not known, and when there is no route at all.
    static constexpr std::int32_t unsupported = static_cast<std::int32_t>(0xE00002C7U);
    static constexpr std::string_view preventDisplaySleep = "PreventUserIdleDisplaySleep";

    /// `keyWindow` gives the sealed window, which is to be realized, or nothing while there is
    /// none; a compositor takes such a wish from a window only.
    PowerAssertionsLinux(RestoreNote&, Gtk::Application&, KeyWindow keyWindow, SystemLog&);
    ~PowerAssertionsLinux() override;

    /// Puts back what the loaded note says that a killed process left. Call it before `create`.
    void restoreAfterCrash();

    /// Succeeds also when all that there is are services that have not answered yet. All
    /// assertions that live at the same time bear the name of the first.
    Creation create(std::string_view type, std::uint32_t level, std::string_view name) override;
    void release(Identifier) override;

private:
    bool engage(const std::string& name);
    bool inhibitByToolkit(const std::string& name);
    void disengage();

    Gtk::Application& m_application;
    KeyWindow m_keyWindow;
    SystemLog& m_log;
    std::optional<SessionInhibitor> m_loginManager;
    ScreenSaverService m_screenSaver;
    std::unique_ptr<DisplayPowerX11> m_server; ///< None without an X server.
    guint m_toolkitCookie = 0;
    std::set<Identifier> m_held;
    Identifier m_lastIdentifier = 0;
};

} // namespace quillox
