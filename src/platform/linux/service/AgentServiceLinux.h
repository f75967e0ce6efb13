#pragma once

#include "platform/linux/service/AgentPlaces.h"
#include "platform/linux/service/UserManager.h"
#include "ports/AgentServices.h"

#include <deque>

namespace quillox {

class SystemLog;

/// One agent of `AgentServicesLinux`.
class AgentServiceLinux final : public AgentService {
public:
    /// `name` is that of the definition without its ending.
    AgentServiceLinux(
        std::string name, AgentPlaces, RunLoop&, SystemLog&, std::chrono::milliseconds patience);

    void status(std::function<void(Status)>) override;
    void registerAgent(Outcome) override;
    void unregisterAgent(Outcome) override;

private:
    using Failure = std::optional<std::string>;
    /// Something that ends with `finish`.
    using Task = std::function<void()>;

    void enqueue(Task);
    template <typename Answer> void finish(const std::function<void(Answer)>&, Answer);

    void readUnitStatus(std::function<void(Status)>);
    Status entryStatus() const;

    void registerUnit(Outcome);
    void enableUnit(const std::string& file, Outcome);
    void removeUnit(Outcome);
    Failure writeUnit(std::string& file) const;
    Failure removeWrittenUnit() const;
    Failure writeEntry() const;
    Failure removeEntry() const;

    std::string unit() const { return m_name + ".service"; }
    std::string writtenUnit() const;
    std::string entry() const;

    std::string m_name;
    AgentPlaces m_places;
    SystemLog& m_log;
    UserManager m_manager;
    std::deque<Task> m_tasks; ///< The first one is under way.
};

} // namespace quillox
