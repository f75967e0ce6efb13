#include "platform/linux/service/NotifySocket.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string_view>

namespace quillox {

namespace {

    pid_t senderOf(msghdr& message)
    {
        for (auto* part = CMSG_FIRSTHDR(&message); part; part = CMSG_NXTHDR(&message, part)) {
            if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_CREDENTIALS)
                continue;
            ucred sender {};
            std::memcpy(&sender, CMSG_DATA(part), sizeof sender);
            return sender.pid;
        }
        return 0;
    }

} // namespace

NotifySocket::NotifySocket()
    : m_socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
{
    // Without a name of ours the kernel finds one that is free, and that ends with the socket.
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    socklen_t length = sizeof address;
    const int isOn = 1;
    auto* general = reinterpret_cast<sockaddr*>(&address);
    if (::setsockopt(m_socket.get(), SOL_SOCKET, SO_PASSCRED, &isOn, sizeof isOn) != 0
        || ::bind(m_socket.get(), general, sizeof address.sun_family) != 0
        || ::getsockname(m_socket.get(), general, &length) != 0)
        return;
    const auto first = offsetof(sockaddr_un, sun_path) + 1;
    m_name = "@" + std::string(address.sun_path + 1, length - first);
}

bool NotifySocket::takePing(pid_t process)
{
    bool isTold = false;
    for (;;) {
        std::array<char, 4096> text;
        alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(ucred))> control {};
        iovec block { text.data(), text.size() };
        msghdr message {};
        message.msg_iov = &block;
        message.msg_iovlen = 1;
        message.msg_control = control.data();
        message.msg_controllen = control.size();
        const auto length = ::recvmsg(m_socket.get(), &message, MSG_CMSG_CLOEXEC);
        if (length < 0)
            return isTold;
        const std::string_view told(text.data(), static_cast<std::size_t>(length));
        const bool isPing = told.find("WATCHDOG=1") != std::string_view::npos;
        isTold = isTold || (isPing && senderOf(message) == process);
    }
}

} // namespace quillox
