#pragma once

#include "platform/linux/service/AgentPlaces.h"
#include "ports/AgentServices.h"

#include <chrono>

namespace quillox {

class RunLoop;
class SystemLog;

/// Login agents as units of this user's systemd where it runs the graphical session, else as
/// entries in the autostart folder whose program restarts the application itself. Only one of the
/// two is ever registered. Main thread only; nothing waits for the service manager.
class AgentServicesLinux final : public AgentServices {
public:
    /// How long the service manager may take for one answer.
    static constexpr std::chrono::seconds defaultPatience { 5 };

    /// All must outlive the agents.
    AgentServicesLinux(RunLoop&, SystemLog&, AgentPlaces = AgentPlaces::ofThisProcess(),
        std::chrono::milliseconds patience = defaultPatience);

    /// The definition of "NAME.plist" is the unit NAME.service.
    std::unique_ptr<AgentService> agent(const std::string& definitionName) override;

private:
    RunLoop& m_runLoop;
    SystemLog& m_log;
    AgentPlaces m_places;
    std::chrono::milliseconds m_patience;
};

} // namespace quillox
