#pragma once

#include "platform/linux/system/GlibOwner.h"

#include <functional>
#include <gio/gio.h>
#include <set>

namespace quillox {

class SystemLog;

/// KDE's own switch for all of its global shortcuts. It outlives this process, but not KDE's
/// service. It works in the background; what failed is logged, once for each direction. Main thread
/// only.
class GlobalShortcutsKde {
public:
    explicit GlobalShortcutsKde(SystemLog&);
    /// What was asked for last is still sent when the bus is known.
    ~GlobalShortcutsKde();

    /// Called, never from within `setBlocked`, when the service has said that its shortcuts are not
    /// blocked, or is not there to block any.
    std::function<void()> onUnblocked;

    void setBlocked(bool);

private:
    struct Call;

    void send();
    void handleAnswer(bool isBlocked, const GError*);
    void logFailure(bool isBlocked, const char* reason);

    SystemLog& m_log;
    bool m_isBlocked = false;
    std::set<bool> m_loggedFailures; ///< The directions.
    GObjectOwner<GDBusConnection> m_bus;
    GObjectOwner<GCancellable> m_pending;
};

} // namespace quillox
