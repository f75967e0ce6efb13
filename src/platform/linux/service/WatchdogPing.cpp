#include "platform/linux/service/WatchdogPing.h"

#include "ports/RunLoop.h"

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace quillox {

namespace {

    std::optional<long long> numberFromEnvironment(const char* name)
    {
        const auto* text = std::getenv(name);
        long long number = 0;
        if (!text || *text == '\0')
            return std::nullopt;
        const auto* end = text + std::strlen(text);
        const auto [rest, error] = std::from_chars(text, end, number);
        return error == std::errc() && rest == end ? std::optional(number) : std::nullopt;
    }

    /// A service manager of another process of ours would get our pings for its own.
    bool isMeantForThisProcess()
    {
        const auto process = numberFromEnvironment("WATCHDOG_PID");
        return !process || *process == ::getpid();
    }

    /// The length of the address, zero when the socket cannot be named. An "@" stands for the zero
    /// byte that begins the name of a socket outside the file system.
    socklen_t readAddress(const char* name, sockaddr_un& address)
    {
        const auto length = name ? std::strlen(name) : 0;
        if (length < 2 || length >= sizeof address.sun_path || (*name != '/' && *name != '@'))
            return 0;
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name, length);
        const bool isAbstract = *name == '@';
        if (isAbstract)
            address.sun_path[0] = '\0';
        const auto end = isAbstract ? length : length + 1;
        return static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + end);
    }

} // namespace

WatchdogPing::WatchdogPing(RunLoop& runLoop)
    : m_addressLength(readAddress(std::getenv("NOTIFY_SOCKET"), m_address))
{
    if (m_addressLength == 0)
        return;
    m_socket = FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    tell("READY=1");
    const auto limit = numberFromEnvironment("WATCHDOG_USEC").value_or(0);
    m_interval = std::chrono::microseconds(isMeantForThisProcess() ? limit / 2 : 0);
    if (m_interval.count() <= 0) {
        m_interval = {};
        return;
    }
    tell("WATCHDOG=1");
    m_timer = runLoop.every(m_interval, [this] { tell("WATCHDOG=1"); });
}

void WatchdogPing::tell(std::string_view state) const
{
    // A manager that has no room for it now hears the next one.
    (void)::sendto(m_socket.get(), state.data(), state.size(), MSG_NOSIGNAL,
        reinterpret_cast<const sockaddr*>(&m_address), m_addressLength);
}

} // namespace quillox
