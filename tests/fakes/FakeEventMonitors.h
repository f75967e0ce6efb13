#pragma once

#include "ports/EventMonitors.h"

#include <map>
#include <memory>

namespace quillox {

class FakeEventMonitors final : public EventMonitors {
public:
    /// Gives the event to every monitor that wants it; whether the windows would get it.
    Verdict send(const Event& event)
    {
        auto verdict = Verdict::Pass;
        const auto asked = *m_monitors;
        for (const auto& [id, monitor] : asked) {
            const bool wanted = m_monitors->contains(id) && (monitor.mask & maskOf(event.type));
            if (wanted && monitor.handler(event) == Verdict::Swallow)
                verdict = Verdict::Swallow;
        }
        return verdict;
    }

    std::size_t activeMonitors() const { return m_monitors->size(); }

    Handle addLocalMonitor(EventMask mask, Handler handler) override
    {
        const auto id = m_nextId++;
        m_monitors->emplace(id, Monitor { mask, std::move(handler) });
        return Handle([monitors = m_monitors, id] { monitors->erase(id); });
    }

private:
    struct Monitor {
        EventMask mask;
        Handler handler;
    };

    std::shared_ptr<std::map<int, Monitor>> m_monitors = std::make_shared<std::map<int, Monitor>>();
    int m_nextId = 0;
};

} // namespace quillox
