#include "platform/linux/system/RunningApplicationsSocket.h"

#include "ports/SystemLog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <fmt/format.h>
#include <glib-unix.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <thread>
#include <utility>

namespace quillox {

namespace {

    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;

    /// How long a second copy waits for the first one's word before it takes it for hung.
    constexpr auto patience = 1s;
    constexpr int lockAttempts = 3;
    constexpr std::size_t longestToken = 4096;

    sockaddr_un addressOf(const std::string& path)
    {
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        return address;
    }

    bool isSameUser(int connection)
    {
        ucred peer {};
        socklen_t size = sizeof(peer);
        return getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0
            && peer.uid == geteuid();
    }

    /// Calls back whenever the descriptor can be read, until the handle goes.
    Handle watchReadable(int descriptor, std::function<void()> callback)
    {
        const auto id = g_unix_fd_add_full(
            G_PRIORITY_DEFAULT, descriptor,
            static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR),
            [](gint, GIOCondition, gpointer data) -> gboolean {
                const auto held = *static_cast<std::function<void()>*>(data);
                held();
                return G_SOURCE_CONTINUE;
            },
            new std::function<void()>(std::move(callback)),
            [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
        return Handle([id] { g_source_remove(id); });
    }

    /// Connects while the first copy may still be on its way to listening.
    FileDescriptor connectUntil(const sockaddr_un& address, Clock::time_point deadline)
    {
        do {
            FileDescriptor socket(
                ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
            if (connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address))
                == 0)
                return socket;
            std::this_thread::sleep_for(10ms);
        } while (Clock::now() < deadline);
        return FileDescriptor();
    }

    struct flock wholeFile()
    {
        struct flock lock { };
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        return lock;
    }

    ProcessId holderOf(int file)
    {
        auto lock = wholeFile();
        const bool isHeld = fcntl(file, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
        return isHeld ? lock.l_pid : 0;
    }

    std::string launchToken()
    {
        for (const auto* name : { "XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID" }) {
            if (const auto* token = std::getenv(name))
                return std::string(token).substr(0, longestToken);
        }
        return {};
    }

} // namespace

std::string RunningApplicationsSocket::runtimeFolder(const std::string& identifier)
{
    if (const auto* folder = std::getenv("XDG_RUNTIME_DIR"); folder && *folder == '/')
        return folder;
    auto folder = fmt::format("{}/{}-{}", g_get_tmp_dir(), identifier, geteuid());
    mkdir(folder.c_str(), 0700);
    struct stat found { };
    const bool isOurs = lstat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode)
        && found.st_uid == geteuid() && (found.st_mode & 0077) == 0;
    return isOurs ? folder : std::string();
}

RunningApplicationsSocket::RunningApplicationsSocket(
    std::string folder, std::string identifier, SystemLog& log)
    : m_folder(std::move(folder))
    , m_identifier(std::move(identifier))
    , m_log(log)
    , m_lock(m_folder.empty()
              ? -1
              : open(path(".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600))
{
    if (!m_lock) {
        m_log.write(fmt::format(
            "Quillox: no single-instance lock in '{}': {}.", m_folder, std::strerror(errno)));
        return;
    }
    becomeFirst();
}

bool RunningApplicationsSocket::becomeFirst()
{
    auto lock = wholeFile();
    m_isFirst = fcntl(m_lock.get(), F_SETLK, &lock) == 0;
    if (m_isFirst)
        listen();
    return m_isFirst;
}

ProcessId RunningApplicationsSocket::firstCopy(const std::string& identifier)
{
    const auto path = runtimeFolder(identifier) + "/" + identifier + ".lock";
    const FileDescriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
    return file ? holderOf(file.get()) : 0;
}

RunningApplicationsSocket::~RunningApplicationsSocket()
{
    if (m_listener)
        unlink(path(".socket").c_str());
}

void RunningApplicationsSocket::setOnActivate(std::function<void(const std::string&)> onActivate)
{
    m_onActivate = std::move(onActivate);
}

ProcessId RunningApplicationsSocket::currentProcess() const
{
    return getpid();
}

std::vector<ProcessId> RunningApplicationsSocket::list(const std::string& identifier)
{
    if (identifier != m_identifier)
        return {};
    // The first copy may have ended since; then this one takes its place. A file system that cannot
    // lock never tells of a holder.
    for (int attempt = 0; m_lock && !m_isFirst && attempt < lockAttempts; ++attempt) {
        if (becomeFirst())
            break;
        if (const auto holder = holderOf(m_lock.get()))
            return { holder, getpid() };
    }
    return { getpid() };
}

void RunningApplicationsSocket::activateAllWindows(ProcessId process)
{
    const auto deadline = Clock::now() + patience;
    const auto socket = connectUntil(addressOf(path(".socket")), deadline);
    const auto token = "activate " + launchToken();
    const bool isSent = socket && isSameUser(socket.get())
        && send(socket.get(), token.data(), token.size(), MSG_NOSIGNAL) >= 0;
    pollfd answer { socket.get(), POLLIN, 0 };
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    if (!isSent || poll(&answer, 1, static_cast<int>(std::max(left, 0ms).count())) != 1)
        m_log.write(
            fmt::format("Quillox: the running copy (process {}) does not answer.", process));
}

void RunningApplicationsSocket::listen()
{
    const auto address = addressOf(path(".socket"));
    unlink(address.sun_path);
    m_listener
        = FileDescriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (bind(m_listener.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0
        || ::listen(m_listener.get(), 16) != 0) {
        m_log.write(fmt::format(
            "Quillox: cannot listen on '{}': {}.", address.sun_path, std::strerror(errno)));
        m_listener = FileDescriptor();
        return;
    }
    m_listenerWatch = watchReadable(m_listener.get(), [this] { acceptConnection(); });
}

void RunningApplicationsSocket::acceptConnection()
{
    FileDescriptor socket(
        accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (!socket || !isSameUser(socket.get()))
        return;
    const auto descriptor = socket.get();
    m_connections.push_back(std::make_unique<Connection>(Connection { std::move(socket),
        watchReadable(descriptor, [this, descriptor] { answer(descriptor); }) }));
}

void RunningApplicationsSocket::answer(int connection)
{
    std::array<char, longestToken + 16> buffer {};
    const auto size = recv(connection, buffer.data(), buffer.size(), 0);
    const std::string message(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    const std::string command = "activate ";
    const bool isAsked = message.starts_with(command);
    if (isAsked)
        send(connection, "ok", 2, MSG_NOSIGNAL);
    std::erase_if(
        m_connections, [=](const auto& held) { return held->socket.get() == connection; });
    if (isAsked && m_onActivate)
        m_onActivate(message.substr(command.size()));
}

} // namespace quillox
