#include "platform/linux/lock/BusAddress.h"

#include <unistd.h>

#include <cstdlib>
#include <string>
#include <string_view>

namespace quillox {

bool isBusReachable(GBusType type)
{
    const bool isSystem = type == G_BUS_TYPE_SYSTEM;
    const auto* given
        = std::getenv(isSystem ? "DBUS_SYSTEM_BUS_ADDRESS" : "DBUS_SESSION_BUS_ADDRESS");
    std::string address = given ? given : "";
    constexpr std::string_view socket = "unix:path=";
    if (address.empty()) {
        address = isSystem ? "unix:path=/var/run/dbus/system_bus_socket"
                           : std::string(socket) + g_get_user_runtime_dir() + "/bus";
    }
    if (!address.starts_with(socket))
        return g_dbus_is_supported_address(address.c_str(), nullptr) != FALSE;
    const auto path = address.substr(socket.size(), address.find_first_of(",;") - socket.size());
    return ::access(path.c_str(), R_OK | W_OK) == 0;
}

} // namespace quillox
