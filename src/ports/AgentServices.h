#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillox {

/// One agent of this user: a program that the service manager starts at log-in and again after a
/// crash, as a definition among the application's resources says. Main thread only.
///
/// Every call returns at once; its answer comes later, once, and not after the service is gone.
/// Calls are carried out in the order in which they were made.
class AgentService {
public:
    enum class Status {
        NotRegistered,
        Enabled,
        RequiresApproval, ///< Registered, but somebody must still permit it.
        NotFound, ///< There is no such definition, or nobody to register it with.
    };

    virtual ~AgentService() = default;

    virtual void status(std::function<void(Status)> onStatus) = 0;

    /// The answer is none for success, else why it failed, as a sentence for the system log.
    using Outcome = std::function<void(std::optional<std::string> failure)>;
    virtual void registerAgent(Outcome) = 0;
    virtual void unregisterAgent(Outcome) = 0;
};

/// The agents that the application brings with it.
class AgentServices {
public:
    virtual ~AgentServices() = default;

    virtual std::unique_ptr<AgentService> agent(const std::string& definitionName) = 0;
};

} // namespace quillox
