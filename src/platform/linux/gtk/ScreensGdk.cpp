#include "platform/linux/gtk/ScreensGdk.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gdk/x11/gdkx.h>
#include <sstream>
#include <string_view>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// A monitor announces itself before its geometry is known, and a mode change comes in several
    /// steps.
    constexpr auto settleTime = 100ms;

    std::string_view orEmpty(const char* text)
    {
        return text ? text : "";
    }

    /// FNV-1a; never zero, which stands for the main screen.
    std::uint32_t displayNumberOf(GdkMonitor* monitor)
    {
        std::uint32_t hash = 2166136261U;
        const auto mix = [&hash](std::string_view text) {
            for (const unsigned char byte : text)
                hash = (hash ^ byte) * 16777619U;
            hash = (hash ^ 0xFFU) * 16777619U;
        };
        mix(orEmpty(gdk_monitor_get_connector(monitor)));
        mix(orEmpty(gdk_monitor_get_manufacturer(monitor)));
        mix(orEmpty(gdk_monitor_get_model(monitor)));
        return hash == 0 ? 1 : hash;
    }

    std::string nameOf(GdkMonitor* monitor)
    {
        const std::string connector(orEmpty(gdk_monitor_get_connector(monitor)));
        const std::string model(orEmpty(gdk_monitor_get_model(monitor)));
        const std::string manufacturer(orEmpty(gdk_monitor_get_manufacturer(monitor)));
        if (model.empty() || model == connector)
            return connector;
        return (manufacturer.empty() ? model : manufacturer + " " + model) + " (" + connector + ")";
    }

    /// A monitor without a connector or without an area is a placeholder, not an output.
    bool isOutput(GdkMonitor* monitor)
    {
        GdkRectangle area {};
        gdk_monitor_get_geometry(monitor, &area);
        return gdk_monitor_is_valid(monitor) && gdk_monitor_get_connector(monitor) && area.width > 0
            && area.height > 0;
    }

    /// QUILLOX_SAFE_AREA_TOP is a list such as "eDP-1=32,HDMI-1=0": connectors and points.
    double safeAreaOf(GdkMonitor* monitor)
    {
        const auto* configured = std::getenv("QUILLOX_SAFE_AREA_TOP");
        const auto wanted = std::string(orEmpty(gdk_monitor_get_connector(monitor))) + "=";
        std::istringstream entries(configured ? configured : "");
        for (std::string entry; std::getline(entries, entry, ',');) {
            if (!entry.starts_with(wanted))
                continue;
            const double points = std::strtod(entry.c_str() + wanted.size(), nullptr);
            return std::isfinite(points) && points > 0 ? points : 0;
        }
        return 0;
    }

} // namespace

ScreensGdk::ScreensGdk(RunLoop& runLoop)
    : m_runLoop(runLoop)
    , m_model(gdk_display_get_monitors(gdk_display_get_default()))
{
    m_modelHandler = g_signal_connect_swapped(m_model, "items-changed",
        G_CALLBACK(+[](ScreensGdk* self) { self->handleMonitorsChanged(); }), this);
    watchMonitors();
    m_reported = arrangement();
}

ScreensGdk::~ScreensGdk()
{
    unwatchMonitors();
    g_signal_handler_disconnect(m_model, m_modelHandler);
}

std::vector<GdkMonitor*> ScreensGdk::monitors() const
{
    std::vector<GdkMonitor*> found;
    for (guint index = 0; index < g_list_model_get_n_items(m_model); ++index) {
        // The model keeps it alive.
        const GObjectOwner<GdkMonitor> monitor(GDK_MONITOR(g_list_model_get_item(m_model, index)));
        if (isOutput(monitor.get()))
            found.push_back(monitor.get());
    }
    return found;
}

GdkMonitor* ScreensGdk::mainMonitor() const
{
    const auto all = monitors();
    auto* display = gdk_display_get_default();
    if (GDK_IS_X11_DISPLAY(display)) {
        auto* primary = gdk_x11_display_get_primary_monitor(display);
        if (std::ranges::find(all, primary) != all.end())
            return primary;
    }
    return all.empty() ? nullptr : all.front();
}

GdkRectangle ScreensGdk::mainGeometry() const
{
    GdkRectangle area {};
    if (auto* main = mainMonitor())
        gdk_monitor_get_geometry(main, &area);
    return area;
}

Screen ScreensGdk::screenFor(GdkMonitor* monitor) const
{
    GdkRectangle area {};
    gdk_monitor_get_geometry(monitor, &area);
    const auto main = mainGeometry();
    return {
        .displayNumber = displayNumberOf(monitor),
        .localizedName = nameOf(monitor),
        .frame = { .x = static_cast<double>(area.x - main.x),
            .y = static_cast<double>(main.y + main.height - area.y - area.height),
            .width = static_cast<double>(area.width),
            .height = static_cast<double>(area.height) },
        .safeAreaTop = safeAreaOf(monitor),
    };
}

GdkRectangle ScreensGdk::toGdk(const Rect& frame) const
{
    const auto whole = [](double value) { return static_cast<int>(std::lround(value)); };
    if (!mainMonitor())
        return { 0, 0, whole(frame.width), whole(frame.height) };
    const auto main = mainGeometry();
    return { whole(frame.x) + main.x, main.y + main.height - whole(frame.y) - whole(frame.height),
        whole(frame.width), whole(frame.height) };
}

std::vector<Screen> ScreensGdk::list() const
{
    std::vector<Screen> screens;
    for (auto* monitor : monitors())
        screens.push_back(screenFor(monitor));
    return screens;
}

std::vector<std::pair<Screen, Rect>> ScreensGdk::arrangement() const
{
    std::vector<std::pair<Screen, Rect>> arrangement;
    for (auto* monitor : monitors()) {
        GdkRectangle area {};
        gdk_monitor_get_geometry(monitor, &area);
        arrangement.emplace_back(screenFor(monitor),
            Rect { static_cast<double>(area.x), static_cast<double>(area.y),
                static_cast<double>(area.width), static_cast<double>(area.height) });
    }
    return arrangement;
}

std::optional<Screen> ScreensGdk::mainScreen() const
{
    auto* main = mainMonitor();
    return main ? std::optional(screenFor(main)) : std::nullopt;
}

GdkMonitor* ScreensGdk::monitor(std::uint32_t displayNumber) const
{
    const auto all = monitors();
    const auto found = std::ranges::find(all, displayNumber, displayNumberOf);
    return found == all.end() ? nullptr : *found;
}

Handle ScreensGdk::onChange(std::function<void()> callback)
{
    return m_changes.observe([callback = std::move(callback)](int) { callback(); });
}

void ScreensGdk::watchMonitors()
{
    for (guint index = 0; index < g_list_model_get_n_items(m_model); ++index) {
        GObjectOwner<GdkMonitor> monitor(GDK_MONITOR(g_list_model_get_item(m_model, index)));
        const auto handler = g_signal_connect_swapped(monitor.get(), "notify",
            G_CALLBACK(+[](ScreensGdk* self) { self->reportWhenSettled(); }), this);
        m_watches.push_back({ std::move(monitor), handler });
    }
}

void ScreensGdk::unwatchMonitors()
{
    for (const auto& watch : m_watches)
        g_signal_handler_disconnect(watch.monitor.get(), watch.handler);
    m_watches.clear();
}

void ScreensGdk::handleMonitorsChanged()
{
    unwatchMonitors();
    watchMonitors();
    reportWhenSettled();
}

void ScreensGdk::reportWhenSettled()
{
    m_settleTimer = m_runLoop.after(settleTime, [this] {
        auto present = arrangement();
        if (present == m_reported)
            return;
        m_reported = std::move(present);
        m_changes.set(m_changes.get() + 1);
    });
}

} // namespace quillox
