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

    /// Takes a tap that the system switched off back into force, as soon as that can be done, or
    /// puts one out of force.
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

    /// None while the system does not confirm that the session's keys come here, or while another
    /// tap of this application is there. `handler` is called for each
    /// event whose type is in `mask`, before the application's own monitors, and is also told, with
    /// an event of one of the two `TapDisabled` types, that the system switched the tap off.
    virtual std::unique_ptr<EventTap> create(Options, EventMask mask, Handler handler) = 0;

    /// Calls back, again and again, when a tap that could not be created is worth another try;
    /// never from within this call, and soon when it already is. One caller at a time.
    [[nodiscard]] virtual Handle onAvailable(std::function<void()>) = 0;
};

} // namespace quillox
