#pragma once

#include <deque>
#include <gdk/gdk.h>
#include <memory>
#include <unordered_map>

namespace quillox {

/// Key events of the past. The engine sends presses that its page did not want through the window a
/// second time, as late as the page is busy.
class JudgedKeyEvents {
public:
    struct Judged {
        bool wasSwallowed;
        const void* judge; ///< Where it was met first.
        const void* focus; ///< The widget that it was on its way to.
    };

    /// None for an event that was not judged yet.
    const Judged* find(GdkEvent* event) const
    {
        const auto found = m_judged.find(event);
        return found == m_judged.end() ? nullptr : &found->second;
    }

    /// Whether the event is older than all that are still known, and was judged long ago therefore.
    /// Only an X server's events all have their times from one clock.
    bool isForgotten(GdkEvent*) const;

    void remember(GdkEvent* event, const Judged& judged)
    {
        if (m_events.size() >= capacity) {
            m_judged.erase(m_events.front().get());
            m_events.pop_front();
        }
        m_events.emplace_back(gdk_event_ref(event));
        m_judged.insert_or_assign(event, judged);
    }

private:
    /// More than anybody types while a page hangs; a few hundred bytes each.
    static constexpr std::size_t capacity = 4096;

    struct EventUnref {
        void operator()(GdkEvent* event) const { gdk_event_unref(event); }
    };

    /// Held, so that no address is used again.
    std::deque<std::unique_ptr<GdkEvent, EventUnref>> m_events;
    std::unordered_map<GdkEvent*, Judged> m_judged;
};

} // namespace quillox
