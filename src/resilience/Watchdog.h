#pragma once

#include "ports/AgentServices.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillox {

class SystemLog;

/// Keeps the application alive: the login agent that starts it with the session and after a crash.
/// The registration is the system's own record and outlives the application. Main thread only.
class Watchdog {
public:
    static constexpr auto agentName = "com.orvendal.quillox.watchdog.plist";

    Watchdog(AgentServices&, SystemLog&);

    /// Brings the registration in line with `enabled`; of several wishes in quick succession the
    /// last one holds. A failure is one line in the system log, and is not tried again.
    void setEnabled(bool enabled);

    /// Asks the system whether the agent is enabled, once all wishes are fulfilled. A registration
    /// that only waits for approval is not.
    void readEnabled(std::function<void(bool)> onAnswer);

private:
    void fulfil(bool wish);
    void ask(std::function<void(bool)> onAnswer);
    void finish(const std::optional<std::string>& failure);

    SystemLog& m_log;
    std::unique_ptr<AgentService> m_agent;
    bool m_isBusy = false;
    std::optional<bool> m_nextWish; ///< What was asked for while the last wish was on its way,
    std::vector<std::function<void(bool)>> m_readers; ///< and who wants to know what came of it.
};

} // namespace quillox
