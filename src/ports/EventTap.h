#pragma once

#include "ports/EventMonitors.h"

#include <functional>
#include <memory>

namespace quillox {

/// A tap in the session's stream of keyboard events, ahead of every application. Destroying it
/// takes it out; its handler is not called after that. Main thread only.
class EventTap {
public:
    virtual ~EventTap() = default;

    /// Takes a tap that the system switched off back into force, or puts one out of force.
    virtual void setEnabled(bool) = 0;
};

/// Makes taps. Main thread only.
class EventTaps {
public:
    enum class Options {
        Default, ///< The handler decides which events go on.
        ListenOnly, ///< Every event goes on.
    };
    using Verdict = EventMonitors::Verdict;
    using Handler = std::function<Verdict(const Event&)>;

    virtual ~EventTaps() = default;

    /// None unless every key of the session was seen to come here. `handler` is called for each
    /// event whose type is in `mask`, before the application's own monitors, and is also told, with
    /// an event of one of the two `TapDisabled` types, that the system switched the tap off.
    virtual std::unique_ptr<EventTap> create(Options, EventMask mask, Handler handler) = 0;

    /// Calls back, again and again, when a tap that could not be created is worth another try. An
    /// empty handle where that never changes.
    [[nodiscard]] virtual Handle onAvailable(std::function<void()>) = 0;
};

} // namespace quillox
