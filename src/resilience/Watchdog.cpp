#include "resilience/Watchdog.h"

#include "ports/SystemLog.h"

#include <utility>

namespace quillox {

Watchdog::Watchdog(AgentServices& services, SystemLog& log)
    : m_log(log)
    , m_agent(services.agent(agentName))
{
}

void Watchdog::setEnabled(bool enabled)
{
    if (m_isBusy)
        m_nextWish = enabled;
    else
        fulfil(enabled);
}

void Watchdog::fulfil(bool wish)
{
    m_isBusy = true;
    ask([this, wish](bool isEnabled) {
        const auto done = [this](const std::optional<std::string>& failure) { finish(failure); };
        if (isEnabled == wish)
            finish(std::nullopt);
        else if (wish)
            m_agent->registerAgent(done);
        else
            m_agent->unregisterAgent(done);
    });
}

void Watchdog::finish(const std::optional<std::string>& failure)
{
    if (failure)
        m_log.write("Quillox: watchdog update failed: " + *failure);
    m_isBusy = false;
    if (const auto next = std::exchange(m_nextWish, std::nullopt))
        return fulfil(*next);
    for (auto& reader : std::exchange(m_readers, {}))
        ask(std::move(reader));
}

void Watchdog::readEnabled(std::function<void(bool)> onAnswer)
{
    if (m_isBusy)
        m_readers.push_back(std::move(onAnswer));
    else
        ask(std::move(onAnswer));
}

void Watchdog::ask(std::function<void(bool)> onAnswer)
{
    m_agent->status([onAnswer = std::move(onAnswer)](AgentService::Status status) {
        onAnswer(status == AgentService::Status::Enabled);
    });
}

} // namespace quillox
