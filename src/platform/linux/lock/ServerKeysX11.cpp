#include "platform/linux/lock/ServerKeysX11.h"

#include "platform/linux/lock/ErrorTrapX11.h"
#include "platform/linux/lock/OwnersX11.h"

#include <algorithm>
#include <cstring>
#include <utility>

// Last, since Xlib claims common words.
#include <gdk/x11/gdkx.h>

namespace quillox {

namespace {

    using Keyboard = TakenServerKeys::Keyboard;

    bool isServersOwn(int type)
    {
        return type == XkbSA_Terminate || type == XkbSA_SwitchScreen
            || type == XkbSA_XFree86Private;
    }

    KeyMapX11 keyMap(::Display* display, int keyboard)
    {
        KeyMapX11 map(XkbGetMap(display, XkbAllMapComponentsMask, static_cast<unsigned>(keyboard)));
        if (map && XkbGetControls(display, XkbAllControlsMask, map.get()) == Success && map->ctrls)
            return map;
        return nullptr;
    }

    void sendActions(::Display* display, KeyMapX11& map)
    {
        XkbMapChangesRec changes {};
        changes.changed = XkbKeyActionsMask;
        changes.first_key_act = map->min_key_code;
        changes.num_key_acts
            = static_cast<unsigned char>(map->max_key_code - map->min_key_code + 1);
        XkbChangeMap(display, map.get(), &changes);
    }

    void setAccessXKeys(::Display* display, const Keyboard& keyboard, bool isOn)
    {
        if (keyboard.hadAccessXKeys) {
            XkbChangeEnabledControls(display, static_cast<unsigned>(keyboard.identifier),
                XkbAccessXKeysMask, isOn ? XkbAccessXKeysMask : 0);
        }
    }

    void readActions(KeyMapX11& map, Keyboard& keyboard)
    {
        for (int key = map->min_key_code; key <= map->max_key_code; ++key) {
            if (!XkbKeyHasActions(map.get(), key))
                continue;
            for (int index = 0; index < XkbKeyNumActions(map.get(), key); ++index) {
                const auto* action = XkbKeyAction(map.get(), key, index);
                if (!isServersOwn(action->type))
                    continue;
                auto& taken = keyboard.actions.emplace_back();
                taken.keyCode = key;
                taken.index = index;
                static_assert(sizeof(XkbAction) == sizeof(taken.action));
                std::memcpy(taken.action.data(), action, sizeof(XkbAction));
            }
        }
    }

    /// Writes to the key's place in the map; whether that changes it.
    bool setAction(KeyMapX11& map, const TakenServerKeys::Action& taken, bool isBack)
    {
        const int key = taken.keyCode;
        if (!isServersOwn(taken.action[0]) || key < map->min_key_code || key > map->max_key_code
            || taken.index < 0 || taken.index >= XkbKeyNumSyms(map.get(), key))
            return false;
        if (!XkbKeyHasActions(map.get(), key)
            && (!isBack || !XkbResizeKeyActions(map.get(), key, XkbKeyNumSyms(map.get(), key))))
            return false;
        auto* action = XkbKeyAction(map.get(), key, taken.index);
        if (isBack ? action->type != XkbSA_NoAction : !isServersOwn(action->type))
            return false;
        constexpr decltype(taken.action) noAction {};
        static_assert(XkbSA_NoAction == 0);
        std::memcpy(action, isBack ? taken.action.data() : noAction.data(), sizeof(XkbAction));
        return true;
    }

    void changeActions(::Display* display, const TakenServerKeys& taken, bool isBack)
    {
        for (const auto& keyboard : taken.keyboards) {
            auto map = keyMap(display, keyboard.identifier);
            if (!map)
                continue;
            bool isChanged = false;
            for (const auto& action : keyboard.actions)
                isChanged = setAction(map, action, isBack) || isChanged;
            if (isChanged)
                sendActions(display, map);
            setAccessXKeys(display, keyboard, isBack);
        }
    }

    /// The one that stands for all and each that is attached to it.
    std::vector<Keyboard> presentKeyboards(::Display* display)
    {
        int count = 0;
        const InputDevicesX11 devices(XIQueryDevice(display, XIAllDevices, &count));
        std::vector<Keyboard> keyboards;
        for (int index = 0; devices && index < count; ++index) {
            const auto& device = devices.get()[index];
            if (device.use == XIMasterKeyboard || device.use == XISlaveKeyboard)
                keyboards.push_back({ device.deviceid, device.name, {}, false });
        }
        return keyboards;
    }

    void merge(Keyboard found, TakenServerKeys& taken, bool isRenewed)
    {
        const auto earlier = std::find_if(taken.keyboards.begin(), taken.keyboards.end(),
            [&](const Keyboard& other) { return other.identifier == found.identifier; });
        if (earlier == taken.keyboards.end()) {
            taken.keyboards.push_back(std::move(found));
            return;
        }
        if (earlier->name != found.name) {
            *earlier = std::move(found); // Another one got its identifier.
            return;
        }
        earlier->hadAccessXKeys = earlier->hadAccessXKeys || found.hadAccessXKeys;
        // A map without any may be a copy of one that they were taken from.
        if (isRenewed && !found.actions.empty())
            earlier->actions.clear();
        for (const auto& action : found.actions) {
            std::erase_if(earlier->actions, [&action](const TakenServerKeys::Action& other) {
                return other.keyCode == action.keyCode && other.index == action.index;
            });
            earlier->actions.push_back(action);
        }
    }

} // namespace

std::unique_ptr<ServerKeysX11> ServerKeysX11::make(GdkDisplay* display)
{
    if (!display || !GDK_IS_X11_DISPLAY(display))
        return nullptr;
    std::unique_ptr<ServerKeysX11> keys(new ServerKeysX11(display));
    auto* server = gdk_x11_display_get_xdisplay(display);
    int ignored = 0;
    const bool isCapable
        = XkbQueryExtension(server, &ignored, &keys->m_xkbEventType, &ignored, nullptr, nullptr)
        && XQueryExtension(server, "XInputExtension", &keys->m_inputExtension, &ignored, &ignored);
    return isCapable ? std::move(keys) : nullptr;
}

ServerKeysX11::ServerKeysX11(GdkDisplay* display)
    : m_display(display)
{
}

ServerKeysX11::~ServerKeysX11()
{
    stopWatching();
}

void ServerKeysX11::stopWatching()
{
    if (m_watch != 0)
        g_signal_handler_disconnect(m_display, std::exchange(m_watch, 0));
    m_renewed.clear();
}

void ServerKeysX11::note(TakenServerKeys& taken)
{
    const ErrorTrapX11 trap(m_display);
    auto* server = gdk_x11_display_get_xdisplay(m_display);
    if (m_watch == 0)
        m_watch = g_signal_connect(m_display, "xevent", G_CALLBACK(handleEvent), this);
    // The toolkit selects some of these itself, so they are never deselected.
    constexpr unsigned events = XkbNewKeyboardNotifyMask | XkbMapNotifyMask | XkbControlsNotifyMask;
    for (auto& keyboard : presentKeyboards(server)) {
        const int identifier = keyboard.identifier;
        XkbSelectEvents(server, static_cast<unsigned>(identifier), events, events);
        auto map = keyMap(server, identifier);
        if (!map)
            continue;
        readActions(map, keyboard);
        keyboard.hadAccessXKeys = (map->ctrls->enabled_ctrls & XkbAccessXKeysMask) != 0;
        merge(std::move(keyboard), taken, m_renewed.contains(identifier));
    }
    m_renewed.clear();
}

void ServerKeysX11::takeAway(const TakenServerKeys& taken)
{
    const ErrorTrapX11 trap(m_display);
    auto* server = gdk_x11_display_get_xdisplay(m_display);
    changeActions(server, taken, false);
    XSync(server, False);
}

void ServerKeysX11::putBack(const TakenServerKeys& taken)
{
    stopWatching();
    const ErrorTrapX11 trap(m_display);
    auto* server = gdk_x11_display_get_xdisplay(m_display);
    changeActions(server, taken, true);
    XSync(server, False); // The process may be about to end.
}

gboolean ServerKeysX11::handleEvent(GdkDisplay*, gpointer event, gpointer owner)
{
    auto& self = *static_cast<ServerKeysX11*>(owner);
    const auto& any = *static_cast<XEvent*>(event);
    bool isChange = false;
    if (any.type == self.m_xkbEventType) {
        const auto& xkb = *static_cast<XkbEvent*>(event);
        if (xkb.any.xkb_type == XkbNewKeyboardNotify)
            self.m_renewed.insert(static_cast<int>(xkb.any.device));
        isChange = xkb.any.xkb_type == XkbNewKeyboardNotify || xkb.any.xkb_type == XkbMapNotify
            || xkb.any.xkb_type == XkbControlsNotify;
    } else if (any.type == GenericEvent) {
        isChange = any.xcookie.extension == self.m_inputExtension
            && any.xcookie.evtype == XI_HierarchyChanged;
    }
    if (isChange && self.onChange)
        self.onChange();
    return GDK_EVENT_PROPAGATE;
}

} // namespace quillox
