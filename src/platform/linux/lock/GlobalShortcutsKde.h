#pragma once

#include "platform/linux/system/GlibOwner.h"

#include <gio/gio.h>

namespace quillox {

class SystemLog;

/// KDE's own switch for all of its global shortcuts. It outlives this process. It works in the
/// background; a session without the service is logged, once. Main thread only.
class GlobalShortcutsKde {
public:
    explicit GlobalShortcutsKde(SystemLog&);
    /// What was asked for last is still sent when the bus is known.
    ~GlobalShortcutsKde();

    void setBlocked(bool);

private:
    void send();

    SystemLog& m_log;
    bool m_isBlocked = false;
    bool m_hasLoggedFailure = false;
    GObjectOwner<GDBusConnection> m_bus;
    GObjectOwner<GCancellable> m_pending;
};

} // namespace quillox
