#pragma once

#include "platform/linux/lock/KeyboardLayer.h"
#include "ports/EventTap.h"
#include "ports/KeyState.h"
#include "support/Lifetime.h"

#include <memory>

namespace quillox {

class ApplicationGtk;
class EventMonitorsGtk;
class RunLoop;
class SystemLog;

/// A tap is two things together: a layer that brings every key of the session to our windows, and
/// the filter on those windows. There is one tap at a time.
class EventTapsLinux final : public EventTaps, public KeyState {
public:
    EventTapsLinux(EventMonitorsGtk&, std::unique_ptr<KeyboardLayer>, RunLoop&, SystemLog&);

    std::unique_ptr<EventTap> create(Options, EventMask, Handler) override;
    Handle onAvailable(std::function<void()>) override;

    /// X11 tells; elsewhere it is what our windows have seen.
    bool isKeyDown(KeyStateSource, KeyCode) const override;

private:
    class Tap;

    void handleLayerChange();
    void announceAvailability();
    void noteLoss(bool isLost);

    EventMonitorsGtk& m_monitors;
    std::unique_ptr<KeyboardLayer> m_layer;
    RunLoop& m_runLoop;
    SystemLog& m_log;
    Tap* m_tap = nullptr;
    std::function<void()> m_onAvailable;
    bool m_isLost = false; ///< Wanted and missing, and the log knows.
    Lifetime m_lifetime;
};

/// The layer that the present display server offers.
std::unique_ptr<KeyboardLayer> makeKeyboardLayer(ApplicationGtk&, RunLoop&);

} // namespace quillox
