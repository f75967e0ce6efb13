#pragma once

#include <memory>
#include <string>

namespace quillox {

class SystemLog;

/// The desktop's screen saver, as the session bus offers it. It works in the background; a session
/// without the service is logged, once. The service drops the inhibition when the process dies,
/// because its connection leaves the bus. Main thread only.
class ScreenSaverService {
public:
    explicit ScreenSaverService(SystemLog&);
    ~ScreenSaverService();

    /// Whether there is a session bus to ask.
    bool inhibit(std::string reason);
    void release();

private:
    struct Request;

    static void call(std::shared_ptr<Request>);
    static void endInhibition(std::shared_ptr<Request>);

    SystemLog& m_log;
    std::shared_ptr<Request> m_request;
    std::shared_ptr<bool> m_hasLoggedFailure = std::make_shared<bool>(false);
};

} // namespace quillox
