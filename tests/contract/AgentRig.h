#pragma once

#include "contract/SavedFiles.h"
#include "fakes/FakeSystemLog.h"
#include "platform/linux/service/AgentServicesLinux.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "resilience/Watchdog.h"

#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <sstream>

namespace quillox {

inline std::string contentsOf(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path).rdbuf();
    return text.str();
}

/// The agents of one user, and what becomes of what is asked of them.
class AgentRig {
public:
    static constexpr auto name = "com.orvendal.quillox.watchdog";

    explicit AgentRig(
        AgentPlaces at, std::chrono::milliseconds patience = std::chrono::milliseconds(300))
        : places(std::move(at))
        , services(loop, log, places, patience)
    {
    }

    /// Turns the main loop until something holds.
    template <typename Condition> bool waitFor(Condition condition)
    {
        const auto deadline = loop.monotonicNow() + std::chrono::seconds(20);
        const auto wakeUp = loop.every(std::chrono::milliseconds(5), [] {});
        while (!condition() && loop.monotonicNow() < deadline)
            g_main_context_iteration(nullptr, TRUE);
        return condition();
    }

    AgentService::Status status()
    {
        std::optional<AgentService::Status> answer;
        agent->status([&](auto status) { answer = status; });
        EXPECT_FALSE(answer) << "not from within the call";
        EXPECT_TRUE(waitFor([&] { return answer.has_value(); }));
        return answer.value_or(AgentService::Status::NotFound);
    }

    /// "+" registers and "-" unregisters. Empty for success.
    std::string ask(char what)
    {
        std::optional<std::optional<std::string>> answer;
        const auto take = [&](auto failure) { answer = failure; };
        what == '+' ? agent->registerAgent(take) : agent->unregisterAgent(take);
        EXPECT_TRUE(waitFor([&] { return answer.has_value(); }));
        return answer ? answer->value_or("") : "no answer";
    }

    /// The operator's switch: the lines that it leaves in the log.
    std::vector<std::string> setEnabled(bool enabled)
    {
        FakeSystemLog lines;
        Watchdog watchdog(services, lines);
        watchdog.setEnabled(enabled);
        bool isDone = false;
        // The first answer comes when the switch has asked for a change, the second one after it.
        watchdog.readEnabled([&](bool) { watchdog.readEnabled([&](bool) { isDone = true; }); });
        EXPECT_TRUE(waitFor([&] { return isDone; }));
        return lines.lines();
    }

    std::filesystem::path entry() const
    {
        return std::filesystem::path(places.configFolder) / "autostart"
            / (std::string(name) + ".desktop");
    }

    AgentPlaces places;
    RunLoopGlib loop;
    FakeSystemLog log;
    AgentServicesLinux services;
    std::unique_ptr<AgentService> agent = services.agent(std::string(name) + ".plist");
};

} // namespace quillox
