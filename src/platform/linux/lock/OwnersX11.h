#pragma once

#include <memory>

// Last, since Xlib claims common words.
#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>

namespace quillox {

struct FreeX11 {
    void operator()(void* memory) const { XFree(memory); }
};

/// Owns what a call of Xlib handed out.
template <typename Type> using OwnerX11 = std::unique_ptr<Type, FreeX11>;

struct FreeKeyMapX11 {
    void operator()(XkbDescPtr map) const { XkbFreeKeyboard(map, XkbAllComponentsMask, True); }
};

/// Owns the map of one keyboard.
using KeyMapX11 = std::unique_ptr<XkbDescRec, FreeKeyMapX11>;

struct FreeInputDevicesX11 {
    void operator()(XIDeviceInfo* devices) const { XIFreeDeviceInfo(devices); }
};

/// Owns a list of input devices.
using InputDevicesX11 = std::unique_ptr<XIDeviceInfo, FreeInputDevicesX11>;

} // namespace quillox
