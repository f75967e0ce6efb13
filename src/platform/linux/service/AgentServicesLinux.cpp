#include "platform/linux/service/AgentServicesLinux.h"

#include "platform/linux/service/AgentServiceLinux.h"

#include <string_view>
#include <utility>

namespace quillox {

AgentServicesLinux::AgentServicesLinux(
    RunLoop& runLoop, SystemLog& log, AgentPlaces places, std::chrono::milliseconds patience)
    : m_runLoop(runLoop)
    , m_log(log)
    , m_places(std::move(places))
    , m_patience(patience)
{
}

std::unique_ptr<AgentService> AgentServicesLinux::agent(const std::string& definitionName)
{
    constexpr std::string_view ending = ".plist";
    auto name = definitionName;
    if (name.ends_with(ending))
        name.resize(name.size() - ending.size());
    return std::make_unique<AgentServiceLinux>(
        std::move(name), m_places, m_runLoop, m_log, m_patience);
}

} // namespace quillox
