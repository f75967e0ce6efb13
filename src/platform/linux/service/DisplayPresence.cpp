#include "platform/linux/service/DisplayPresence.h"

#include "platform/linux/system/FileDescriptor.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

namespace quillox {

namespace {

    std::string environment(const char* name)
    {
        const auto* value = std::getenv(name);
        return value ? value : "";
    }

    /// A name that begins with a zero byte is one outside the file system. Somebody who is too busy
    /// to accept is there.
    bool doesListen(const std::string& name)
    {
        sockaddr_un address {};
        if (name.size() >= sizeof address.sun_path)
            return false;
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        const bool isAbstract = name.starts_with('\0');
        const auto length = offsetof(sockaddr_un, sun_path) + name.size() + (isAbstract ? 0 : 1);
        const FileDescriptor socket(
            ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                   static_cast<socklen_t>(length))
            == 0
            || errno == EAGAIN;
    }

    bool isWaylandPresent(const std::string& display)
    {
        const auto folder = environment("XDG_RUNTIME_DIR");
        return doesListen(display.starts_with('/') ? display : folder + "/" + display);
    }

    bool isX11Present(const std::string& display)
    {
        const auto colon = display.rfind(':');
        const auto host = display.substr(0, colon);
        if (colon == std::string::npos || (!host.empty() && host != "unix"))
            return true;
        const auto number = display.substr(colon + 1, display.find('.', colon) - colon - 1);
        const auto path = "/tmp/.X11-unix/X" + number;
        return doesListen(path) || doesListen(std::string(1, '\0') + path);
    }

} // namespace

bool isDisplayPresent()
{
    const auto wayland = environment("WAYLAND_DISPLAY");
    const auto x11 = environment("DISPLAY");
    return (!wayland.empty() && isWaylandPresent(wayland)) || (!x11.empty() && isX11Present(x11));
}

} // namespace quillox
