#include "platform/linux/lock/DisplayPowerX11.h"
#include "platform/linux/lock/ErrorTrapX11.h"
#include "platform/linux/lock/KeyboardGrabAttempt.h"
#include "platform/linux/lock/OwnersX11.h"
#include "platform/linux/lock/ServerKeysX11.h"
#include "platform/linux/lock/XwaylandX11.h"
#include "platform/linux/survey/LockSurveyLinux.h"
#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/system/ProcessLook.h"

#include <X11/extensions/XRes.h>
#include <algorithm>
#include <fmt/format.h>
#include <gdk/x11/gdkx.h>
#include <map>
#include <span>
#include <unistd.h>

namespace quillox {

namespace {

    using Grab = X11Facts::KeyboardGrab;

    /// Holds the whole keyboard for as long as one round trip takes.
    Grab tryKeyboard(GdkDisplay* gdkDisplay, ::Display* display)
    {
        const InvisibleWindowX11 window(display);
        const auto answer = attemptKeyboardGrab(gdkDisplay, window.identifier());
        if (answer == KeyboardGrabAnswer::Given)
            endKeyboardGrab(gdkDisplay);
        switch (answer) {
        case KeyboardGrabAnswer::Given:
            return Grab::Free;
        case KeyboardGrabAnswer::HeldByAnother:
            return Grab::Held;
        case KeyboardGrabAnswer::Refused:
            return Grab::Refused;
        }
        return Grab::NotTried;
    }

    /// Whether the server has a device of the kernel's; virtual and nested ones have none.
    bool hasDeviceNode(::Display* display)
    {
        const auto property = XInternAtom(display, "Device Node", True);
        int count = 0;
        const InputDevicesX11 devices(XIQueryDevice(display, XIAllDevices, &count));
        if (property == None || !devices)
            return false;
        const std::span all(devices.get(), static_cast<std::size_t>(count));
        return std::ranges::any_of(all, [=](const XIDeviceInfo& device) {
            Atom type = None;
            int format = 0;
            unsigned long length = 0;
            unsigned long left = 0;
            unsigned char* value = nullptr;
            XIGetProperty(display, device.deviceid, property, 0, 1, False, AnyPropertyType, &type,
                &format, &length, &left, &value);
            const OwnerX11<unsigned char> owned(value);
            return length > 0;
        });
    }

    /// Tells the server of one key what it told us. Whether it accepts that.
    bool acceptsChange(GdkDisplay* gdkDisplay, ::Display* display, int keyboard, int key)
    {
        const KeyMapX11 map(
            XkbGetMap(display, XkbAllMapComponentsMask, static_cast<unsigned>(keyboard)));
        if (!map)
            return false;
        XkbMapChangesRec changes {};
        changes.changed = XkbKeyActionsMask;
        changes.first_key_act = static_cast<KeyCode>(key);
        changes.num_key_acts = 1;
        gdk_x11_display_error_trap_push(gdkDisplay);
        const bool isSent = XkbChangeMap(display, map.get(), &changes) != 0;
        return gdk_x11_display_error_trap_pop(gdkDisplay) == 0 && isSent;
    }

    void surveyServerKeys(GdkDisplay* gdkDisplay, ::Display* display, LockFacts& facts)
    {
        const auto serverKeys = ServerKeysX11::make(gdkDisplay);
        if (!serverKeys)
            return;
        TakenServerKeys found;
        serverKeys->note(found);
        facts.x11.serverKeys = 0;
        for (const auto& [keyboard, name, actions, hadAccessXKeys] : found.keyboards) {
            *facts.x11.serverKeys += static_cast<int>(actions.size());
            // While sealed, the kiosk changes the same keys.
            if (!actions.empty() && facts.isKioskSealed != true)
                facts.x11.canChangeServerKeys = facts.x11.canChangeServerKeys.value_or(true)
                    && acceptsChange(gdkDisplay, display, keyboard, actions.front().keyCode);
        }
    }

    /// The process of every client by its resource base; 0 where the server does not know it.
    std::optional<std::map<XID, int>> clientProcesses(::Display* display)
    {
        int event = 0;
        int error = 0;
        long count = 0;
        XResClientIdValue* answers = nullptr;
        XResClientIdSpec everyone { None, XRES_CLIENT_ID_PID_MASK };
        if (!XResQueryExtension(display, &event, &error)
            || XResQueryClientIds(display, 1, &everyone, &count, &answers) != Success)
            return std::nullopt;
        std::map<XID, int> processes;
        for (auto& answer : std::span(answers, static_cast<std::size_t>(count)))
            processes[answer.spec.client] = std::max(XResGetClientPid(&answer), 0);
        XResClientIdsDestroy(count, answers);
        return processes;
    }

    void surveyClients(::Display* display, int server, LockFacts& facts)
    {
        const auto processes = clientProcesses(display);
        if (!processes)
            return;
        std::map<int, std::string> names;
        for (const auto& [client, process] : *processes) {
            const bool isOurs = process == getpid()
                || (facts.kioskProcess != 0 && isDescendant(process, facts.kioskProcess));
            if (client == 0 || isOurs || (process == server && process != 0))
                continue;
            const auto name = processName(process);
            names[process] = process == 0
                ? "a program whose process is not known"
                : fmt::format("{} (process {})", name.empty() ? "a program" : name, process);
        }
        facts.x11.otherClients.emplace();
        for (const auto& [process, name] : names)
            facts.x11.otherClients->push_back(name);
    }

    /// In the server's pixels.
    std::vector<GdkRectangle> outputs(GdkDisplay* display)
    {
        std::vector<GdkRectangle> areas;
        auto* monitors = gdk_display_get_monitors(display);
        for (guint index = 0; index < g_list_model_get_n_items(monitors); ++index) {
            const GObjectOwner<GdkMonitor> monitor(
                GDK_MONITOR(g_list_model_get_item(monitors, index)));
            const int scale = gdk_monitor_get_scale_factor(monitor.get());
            auto& area = areas.emplace_back();
            gdk_monitor_get_geometry(monitor.get(), &area);
            area = { area.x * scale, area.y * scale, area.width * scale, area.height * scale };
        }
        return areas;
    }

    bool covers(const XWindowAttributes& window, const GdkRectangle& area)
    {
        return window.x <= area.x && window.x + window.width >= area.x + area.width
            && window.y <= area.y && window.y + window.height >= area.y + area.height;
    }

    /// The kiosk seals with windows that no window manager moves and that cover an output each.
    void surveyKiosk(GdkDisplay* gdkDisplay, ::Display* display, LockFacts& facts)
    {
        const auto processes = clientProcesses(display);
        if (facts.kioskProcess == 0 || !processes)
            return;
        ::Window root = 0;
        ::Window parent = 0;
        ::Window* children = nullptr;
        unsigned int count = 0;
        if (!XQueryTree(display, DefaultRootWindow(display), &root, &parent, &children, &count))
            return;
        const OwnerX11<::Window> owned(children);
        const auto areas = outputs(gdkDisplay);
        facts.isKioskSealed = std::ranges::any_of(std::span(children, count), [&](::Window window) {
            auto client = processes->upper_bound(window);
            const bool isKiosk
                = client != processes->begin() && (--client)->second == facts.kioskProcess;
            XWindowAttributes attributes {};
            return isKiosk && XGetWindowAttributes(display, window, &attributes) != 0
                && attributes.override_redirect && attributes.map_state == IsViewable
                && attributes.c_class == InputOutput
                && std::ranges::any_of(
                    areas, [&](const auto& area) { return covers(attributes, area); });
        });
    }

    void surveyWindowManager(GdkDisplay* gdkDisplay, ::Display* display, X11Facts& facts)
    {
        XWindowAttributes root {};
        XGetWindowAttributes(display, DefaultRootWindow(display), &root);
        facts.hasWindowManager = (root.all_event_masks & SubstructureRedirectMask) != 0;
        if (facts.hasWindowManager) {
            const std::string name
                = gdk_x11_screen_get_window_manager_name(gdk_x11_display_get_screen(gdkDisplay));
            facts.windowManager = name == "unknown" ? "" : name;
        }
    }

} // namespace

void surveyX11(GdkDisplay* gdkDisplay, LockFacts& facts)
{
    auto* display = gdk_x11_display_get_xdisplay(gdkDisplay);
    const ErrorTrapX11 passedOver(gdkDisplay); // Windows, devices and clients may go at any time.
    const int server = peerProcess(ConnectionNumber(display));
    facts.displayServer = processName(server);
    facts.serverReadsInput = hasDeviceNode(display);
    facts.x11.isXwayland = isXwayland(gdkDisplay);
    surveyWindowManager(gdkDisplay, display, facts.x11);
    surveyKiosk(gdkDisplay, display, facts);
    surveyClients(display, server, facts);
    surveyServerKeys(gdkDisplay, display, facts);
    int hosts = 0;
    Bool isControlled = False;
    const OwnerX11<XHostAddress> addresses(XListHosts(display, &hosts, &isControlled));
    facts.x11.hasAccessControl = isControlled != False;
    facts.x11.canSuspendScreenSaver = canSuspendScreenSaver(gdkDisplay);
    facts.x11.hasPowerSaving = hasPowerSaving(gdkDisplay);
    facts.x11.keyboardGrab = tryKeyboard(gdkDisplay, display);
}

} // namespace quillox
