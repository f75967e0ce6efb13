#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "ports/RunLoop.h"
#include "ports/Screens.h"
#include "support/Published.h"

#include <gdk/gdk.h>
#include <vector>

namespace quillox {

/// The monitors of the default GDK display. Display numbers are made from the connector and the
/// identity of what is connected, so that they survive a reboot and a change of order.
class ScreensGdk final : public Screens {
public:
    explicit ScreensGdk(RunLoop&);
    ~ScreensGdk() override;

    std::vector<Screen> list() const override;
    std::optional<Screen> mainScreen() const override;
    Handle onChange(std::function<void()>) override;

    /// The monitor with that display number, borrowed; null when it is not connected.
    GdkMonitor* monitor(std::uint32_t displayNumber) const;

    /// From the plane of all screens to the toolkit's, whose y grows downwards.
    GdkRectangle toGdk(const Rect&) const;

private:
    struct Watch {
        GObjectOwner<GdkMonitor> monitor;
        gulong handler;
    };

    std::vector<GdkMonitor*> monitors() const;
    GdkMonitor* mainMonitor() const;
    GdkRectangle mainGeometry() const;
    Screen screenFor(GdkMonitor*) const;
    void watchMonitors();
    void unwatchMonitors();
    void handleMonitorsChanged();
    void reportWhenSettled();
    std::vector<std::pair<Screen, Rect>> arrangement() const;

    RunLoop& m_runLoop;
    GListModel* m_model; ///< The display's own.
    gulong m_modelHandler = 0;
    std::vector<Watch> m_watches;
    /// What was told last: each screen, and where it is in the toolkit's plane.
    std::vector<std::pair<Screen, Rect>> m_reported;
    Handle m_settleTimer;
    Published<int> m_changes { 0 };
};

} // namespace quillox
