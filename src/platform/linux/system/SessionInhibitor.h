#pragma once

#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/GlibOwner.h"

#include <gio/gio.h>
#include <string>

namespace quillox {

class SystemLog;

/// Holds a block inhibitor of the login manager while it is engaged. It works in the background; a
/// session without a login manager is logged, once. The login manager drops the inhibitor when the
/// process dies. Main thread only.
class SessionInhibitor {
public:
    /// `what` as the login manager names it, for example "shutdown:sleep".
    SessionInhibitor(std::string what, std::string why, SystemLog&);
    ~SessionInhibitor();

    void setEngaged(bool engaged);

private:
    void request();
    void handleReply(const GError*, GUnixFDList*);

    std::string m_what;
    std::string m_why;
    SystemLog& m_log;
    GObjectOwner<GCancellable> m_pending; ///< Cancelled when nobody waits for the answer any more.
    FileDescriptor m_inhibitor;
    bool m_hasLoggedFailure = false;
};

} // namespace quillox
