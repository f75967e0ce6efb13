#include "platform/linux/lock/ServerMark.h"

#include "platform/linux/lock/ErrorTrapX11.h"
#include "platform/linux/lock/OwnersX11.h"

#include <unistd.h>

#include <fmt/format.h>

// Last, since Xlib claims common words.
#include <X11/Xatom.h>

namespace quillox {

std::string serverMark(GdkDisplay* display)
{
    if (!display || !GDK_IS_X11_DISPLAY(display))
        return {};
    const ErrorTrapX11 trap(display);
    auto* server = gdk_x11_display_get_xdisplay(display);
    const auto root = DefaultRootWindow(server);
    const auto name = XInternAtom(server, "_QUILLOX_SERVER_RUN", False);
    ::Atom type = None;
    int format = 0;
    unsigned long length = 0;
    unsigned long left = 0;
    unsigned char* bytes = nullptr;
    constexpr long longest = 64;
    XGetWindowProperty(
        server, root, name, 0, longest, False, XA_STRING, &type, &format, &length, &left, &bytes);
    const OwnerX11<unsigned char> owner(bytes);
    if (type == XA_STRING && format == 8 && length > 0)
        return { reinterpret_cast<const char*>(bytes), length };
    auto mark = fmt::format("{}-{}", ::getpid(), g_get_real_time());
    XChangeProperty(server, root, name, XA_STRING, 8, PropModeReplace,
        reinterpret_cast<const unsigned char*>(mark.data()), static_cast<int>(mark.size()));
    return mark;
}

} // namespace quillox
