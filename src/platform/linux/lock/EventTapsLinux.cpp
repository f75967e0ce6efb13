#include "platform/linux/lock/EventTapsLinux.h"

#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/EventMonitorsGtk.h"
#include "platform/linux/gtk/KeyTranslation.h"
#include "platform/linux/lock/KeyboardGrabX11.h"
#include "platform/linux/lock/ShortcutsInhibitorWayland.h"
#include "platform/linux/lock/XwaylandX11.h"
#include "ports/RunLoop.h"
#include "ports/SystemLog.h"

#include <array>
#include <fmt/format.h>

namespace quillox {

namespace {

    /// Under Xwayland a grab succeeds, and the compositor gets every key before it.
    class NoKeyboardLayer final : public KeyboardLayer {
    public:
        std::string_view name() const override { return "none under Xwayland"; }
        bool engage() override { return false; }
        void release() override { }
        bool isHeld() const override { return false; }
        bool isIndependentOfFocus() const override { return false; }
    };

} // namespace

class EventTapsLinux::Tap final : public EventTap {
public:
    Tap(EventTapsLinux& owner, EventMask mask, Handler handler)
        : m_owner(owner)
        , m_handler(handler)
        , m_filter(owner.m_monitors.setTap(
              mask, std::move(handler), owner.m_layer->isIndependentOfFocus()))
    {
        m_owner.m_tap = this;
    }
    ~Tap() override
    {
        m_filter.reset();
        m_owner.m_tap = nullptr;
        m_owner.m_layer->release();
    }

    void setEnabled(bool isEnabled) override
    {
        if (isEnabled)
            m_owner.m_layer->engage();
        else
            m_owner.m_layer->release();
    }

    void reportDisabled() const
    {
        const auto handler = m_handler; // It may take the tap out.
        handler({ .type = EventType::TapDisabledByUserInput });
    }

private:
    EventTapsLinux& m_owner;
    Handler m_handler;
    Handle m_filter;
};

EventTapsLinux::EventTapsLinux(EventMonitorsGtk& monitors, std::unique_ptr<KeyboardLayer> layer,
    RunLoop& runLoop, SystemLog& log)
    : m_monitors(monitors)
    , m_layer(std::move(layer))
    , m_runLoop(runLoop)
    , m_log(log)
{
    m_layer->onChange = [this] { handleLayerChange(); };
}

std::unique_ptr<EventTap> EventTapsLinux::create(Options options, EventMask mask, Handler handler)
{
    if (m_tap)
        return nullptr;
    if (!m_layer->engage()) {
        // Who waits for the layer needs it to go on trying.
        if (!m_onAvailable)
            m_layer->release();
        return nullptr;
    }
    if (options == Options::ListenOnly) {
        handler = [listener = std::move(handler)](const Event& event) {
            listener(event);
            return Verdict::Pass;
        };
    }
    return std::make_unique<Tap>(*this, mask, std::move(handler));
}

Handle EventTapsLinux::onAvailable(std::function<void()> callback)
{
    m_onAvailable = std::move(callback);
    // Who could not create a tap has said so. It may have come free since.
    m_isLost = !m_layer->engage();
    announceAvailability();
    return Handle([this] {
        m_onAvailable = nullptr;
        if (!m_tap)
            m_layer->release();
    });
}

void EventTapsLinux::announceAvailability()
{
    m_runLoop.post(m_lifetime.guard([this] {
        const auto available = m_onAvailable;
        if (available && !m_tap && m_layer->isHeld())
            available();
    }));
}

void EventTapsLinux::handleLayerChange()
{
    if (!m_layer->isHeld() && m_tap)
        m_tap->reportDisabled(); // Its owner takes the layer back, if that can be done at once.
    noteLoss(!m_layer->isHeld());
    if (m_layer->isHeld())
        announceAvailability();
    else
        m_monitors.releaseKeys();
}

void EventTapsLinux::noteLoss(bool isLost)
{
    if (std::exchange(m_isLost, isLost) == isLost)
        return;
    m_log.write(fmt::format(
        "Quillox: keyboard lock {}: {}.", isLost ? "missing" : "back", m_layer->name()));
}

bool EventTapsLinux::isKeyDown(KeyStateSource, KeyCode key) const
{
    auto* display = gdk_display_get_default();
    if (!GDK_IS_X11_DISPLAY(display))
        return m_monitors.isKeyDown(key);
    const auto hardwareKey = hardwareKeyFor(key);
    std::array<char, 32> keys {};
    XQueryKeymap(gdk_x11_display_get_xdisplay(display), keys.data());
    return hardwareKey && (keys.at(*hardwareKey / 8) >> (*hardwareKey % 8) & 1) != 0;
}

std::unique_ptr<KeyboardLayer> makeKeyboardLayer(ApplicationGtk& application, RunLoop& runLoop)
{
    auto* display = gdk_display_get_default();
    if (isXwayland(display))
        return std::make_unique<NoKeyboardLayer>();
    if (GDK_IS_X11_DISPLAY(display)) {
        return std::make_unique<KeyboardGrabX11>(
            [&application] { return application.keyWindow(); }, runLoop);
    }
    return std::make_unique<ShortcutsInhibitorWayland>(application, runLoop);
}

} // namespace quillox
