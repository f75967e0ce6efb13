#include "platform/linux/launcher/NotifyRelay.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace quillox {

namespace {

    sockaddr* general(sockaddr_un& address)
    {
        return reinterpret_cast<sockaddr*>(&address);
    }

} // namespace

NotifyRelay::NotifyRelay()
{
    const auto* manager = std::getenv("NOTIFY_SOCKET");
    const auto length = manager ? std::strlen(manager) : 0;
    if (length < 2 || length >= sizeof m_manager.sun_path || (*manager != '/' && *manager != '@'))
        return;
    m_manager.sun_family = AF_UNIX;
    std::memcpy(m_manager.sun_path, manager, length);
    if (*manager == '@')
        m_manager.sun_path[0] = '\0'; // A name outside the file system.
    m_managerLength = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + length);

    // Without a name of ours the kernel finds one that is free, and that ends with the socket.
    FileDescriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un own {};
    own.sun_family = AF_UNIX;
    socklen_t ownLength = sizeof own;
    if (!socket || ::bind(socket.get(), general(own), sizeof own.sun_family) != 0
        || ::getsockname(socket.get(), general(own), &ownLength) != 0)
        return;
    const auto first = offsetof(sockaddr_un, sun_path) + 1;
    m_name = "@" + std::string(own.sun_path + 1, ownLength - first);
    m_socket = std::move(socket);
}

void NotifyRelay::passOn() const
{
    std::array<char, 4096> text;
    for (;;) {
        const auto length = ::recv(m_socket.get(), text.data(), text.size(), 0);
        if (length < 0)
            return;
        auto manager = m_manager;
        // A manager that has no room for it now hears the next one.
        (void)::sendto(m_socket.get(), text.data(), static_cast<std::size_t>(length), MSG_NOSIGNAL,
            general(manager), m_managerLength);
    }
}

} // namespace quillox
