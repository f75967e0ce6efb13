#include "platform/linux/lock/ErrorTrapX11.h"
#include "platform/linux/lock/ServerKeysX11.h"
#include "platform/linux/survey/LockSurveyLinux.h"
#include "platform/linux/survey/ProcessLook.h"
#include "platform/linux/system/GlibOwner.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XRes.h>
#include <X11/extensions/scrnsaver.h>
#include <algorithm>
#include <array>
#include <fmt/format.h>
#include <gdk/x11/gdkx.h>
#include <map>
#include <memory>
#include <span>
#include <unistd.h>

namespace quillox {

namespace {

    using Grab = X11Facts::KeyboardGrab;

    struct XFreeMemory {
        void operator()(void* memory) const { XFree(memory); }
    };
    template <typename Type> using XOwner = std::unique_ptr<Type, XFreeMemory>;

    struct KeyboardMapFree {
        void operator()(XkbDescPtr map) const { XkbFreeKeyboard(map, 0, True); }
    };
    using KeyboardMap = std::unique_ptr<XkbDescRec, KeyboardMapFree>;

    /// Holds the whole keyboard for as long as one round trip takes.
    Grab tryKeyboard(GdkDisplay* gdkDisplay, ::Display* display)
    {
        auto* keyboard = gdk_seat_get_keyboard(gdk_display_get_default_seat(gdkDisplay));
        if (!keyboard)
            return Grab::Refused;
        const int device = gdk_x11_device_get_id(keyboard);
        XSetWindowAttributes attributes {};
        attributes.override_redirect = True;
        const auto window = XCreateWindow(display, DefaultRootWindow(display), -1, -1, 1, 1, 0, 0,
            InputOnly, CopyFromParent, CWOverrideRedirect, &attributes);
        XMapWindow(display, window);
        std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits {};
        XIEventMask mask { device, static_cast<int>(bits.size()), bits.data() };
        gdk_x11_display_error_trap_push(gdkDisplay);
        const int status = XIGrabDevice(display, device, window, CurrentTime, None, GrabModeAsync,
            GrabModeAsync, XIOwnerEvents, &mask);
        if (status == GrabSuccess)
            XIUngrabDevice(display, device, CurrentTime);
        const bool hasFailed = gdk_x11_display_error_trap_pop(gdkDisplay) != 0;
        XDestroyWindow(display, window);
        XSync(display, False);
        if (status == AlreadyGrabbed || status == GrabFrozen)
            return Grab::Held;
        return status == GrabSuccess && !hasFailed ? Grab::Free : Grab::Refused;
    }

    /// Whether the server has a device of the kernel's; virtual and nested ones have none.
    bool hasDeviceNode(::Display* display)
    {
        const auto property = XInternAtom(display, "Device Node", True);
        int count = 0;
        const std::unique_ptr<XIDeviceInfo, decltype(&XIFreeDeviceInfo)> devices(
            XIQueryDevice(display, XIAllDevices, &count), XIFreeDeviceInfo);
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
            const XOwner<unsigned char> owned(value);
            return length > 0;
        });
    }

    /// Tells the server of one key what it told us. Whether it accepts that.
    bool acceptsChange(GdkDisplay* gdkDisplay, ::Display* display, int keyboard, int key)
    {
        const KeyboardMap map(
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

    /// Whether the kiosk shows a window of the kind that it seals with.
    void surveyKiosk(::Display* display, LockFacts& facts)
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
        const XOwner<::Window> owned(children);
        facts.isKioskSealed = false;
        for (const auto window : std::span(children, count)) {
            auto client = processes->upper_bound(window);
            const bool isKiosk
                = client != processes->begin() && (--client)->second == facts.kioskProcess;
            XWindowAttributes attributes {};
            const bool isKnown = XGetWindowAttributes(display, window, &attributes) != 0;
            constexpr int largestMenu = 320;
            if (isKiosk && isKnown && attributes.override_redirect
                && attributes.map_state == IsViewable && attributes.c_class == InputOutput
                && attributes.width > largestMenu)
                facts.isKioskSealed = true;
        }
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

    bool hasXwaylandOutput(GdkDisplay* display)
    {
        auto* monitors = gdk_display_get_monitors(display);
        for (guint index = 0; index < g_list_model_get_n_items(monitors); ++index) {
            const GObjectOwner<GdkMonitor> monitor(
                GDK_MONITOR(g_list_model_get_item(monitors, index)));
            const auto* connector = gdk_monitor_get_connector(monitor.get());
            if (connector && std::string_view(connector).starts_with("XWAYLAND"))
                return true;
        }
        return false;
    }

} // namespace

void surveyX11(GdkDisplay* gdkDisplay, LockFacts& facts)
{
    auto* display = gdk_x11_display_get_xdisplay(gdkDisplay);
    const ErrorTrapX11 passedOver(gdkDisplay); // Windows, devices and clients may go at any time.
    const int server = peerProcess(ConnectionNumber(display));
    facts.displayServer = processName(server);
    facts.serverReadsInput = hasDeviceNode(display);
    int opcode = 0;
    int event = 0;
    int error = 0;
    // Its socket may be the compositor's; older ones only show by what they call their outputs.
    facts.x11.isXwayland = facts.displayServer == "Xwayland"
        || XQueryExtension(display, "XWAYLAND", &opcode, &event, &error)
        || hasXwaylandOutput(gdkDisplay);
    surveyWindowManager(gdkDisplay, display, facts.x11);
    surveyKiosk(display, facts);
    surveyClients(display, server, facts);
    surveyServerKeys(gdkDisplay, display, facts);
    int hosts = 0;
    Bool isControlled = False;
    const XOwner<XHostAddress> addresses(XListHosts(display, &hosts, &isControlled));
    facts.x11.hasAccessControl = isControlled != False;
    int major = 0;
    int minor = 0;
    facts.x11.canSuspendScreenSaver = XScreenSaverQueryExtension(display, &event, &error)
        && XScreenSaverQueryVersion(display, &major, &minor)
        && (major > 1 || (major == 1 && minor >= 1));
    facts.x11.keyboardGrab = tryKeyboard(gdkDisplay, display);
}

} // namespace quillox
