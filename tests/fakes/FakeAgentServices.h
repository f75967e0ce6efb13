#pragma once

#include "ports/AgentServices.h"
#include "ports/RunLoop.h"

#include <vector>

namespace quillox {

/// A service manager that takes its time: it carries out each call when it answers it.
class FakeAgentServices final : public AgentServices {
public:
    explicit FakeAgentServices(RunLoop& runLoop)
        : m_runLoop(runLoop)
    {
    }

    AgentService::Status status = AgentService::Status::NotRegistered;
    std::optional<std::string> failure; ///< Of registering and unregistering, which change nothing.
    std::string calls; ///< "+" and "-" for each.
    std::string name; ///< The definition that was asked for.

    std::unique_ptr<AgentService> agent(const std::string& definitionName) override
    {
        name = definitionName;
        return std::make_unique<Agent>(*this);
    }

private:
    struct Agent final : AgentService {
        explicit Agent(FakeAgentServices& services)
            : owner(services)
        {
        }
        void status(std::function<void(Status)> onStatus) override
        {
            later([this, onStatus] { onStatus(owner.status); });
        }
        void registerAgent(Outcome onDone) override { change("+", Status::Enabled, onDone); }
        void unregisterAgent(Outcome onDone) override
        {
            change("-", Status::NotRegistered, onDone);
        }
        void change(const char* call, Status wanted, const Outcome& onDone)
        {
            later([this, call, wanted, onDone] {
                owner.calls += call;
                if (!owner.failure)
                    owner.status = wanted;
                onDone(owner.failure);
            });
        }
        void later(std::function<void()> answer)
        {
            answers.push_back(
                owner.m_runLoop.after(std::chrono::milliseconds(100), std::move(answer)));
        }

        FakeAgentServices& owner;
        std::vector<Handle> answers;
    };

    RunLoop& m_runLoop;
};

} // namespace quillox
