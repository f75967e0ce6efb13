#include "platform/linux/system/SystemLogStderr.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace quillox {

namespace {

    /// The service manager names the stream that it reads, because standard error may have been
    /// redirected since.
    bool journalReadsStandardError()
    {
        const auto* stream = std::getenv("JOURNAL_STREAM");
        struct stat status { };
        return stream && ::fstat(STDERR_FILENO, &status) == 0
            && fmt::format("{}:{}", status.st_dev, status.st_ino) == stream;
    }

    /// Line ends would forge further lines, or further fields of the journal's entry.
    std::string oneLine(std::string_view text)
    {
        std::string line(text);
        std::replace_if(
            line.begin(), line.end(),
            [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; }, ' ');
        return line;
    }

} // namespace

SystemLogStderr::SystemLogStderr(std::string journalSocket)
    : m_journalSocket(std::move(journalSocket))
{
    if (!journalReadsStandardError())
        m_socket = FileDescriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

void SystemLogStderr::write(std::string_view text)
{
    const auto line = oneLine(text);
    writeToJournal(line);
    const auto terminated = line + "\n";
    // In one call, so that lines of several threads do not mix. Where it fails there is nowhere
    // left to say so.
    ssize_t written;
    do {
        written = ::write(STDERR_FILENO, terminated.data(), terminated.size());
    } while (written < 0 && errno == EINTR);
}

void SystemLogStderr::writeToJournal(const std::string& line)
{
    sockaddr_un address {};
    if (!m_socket || m_journalSocket.size() >= sizeof address.sun_path)
        return;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, m_journalSocket.c_str(), m_journalSocket.size() + 1);
    const auto entry = fmt::format("MESSAGE={}\nPRIORITY=5\nSYSLOG_IDENTIFIER=quillox\n", line);
    // A journal that is missing or busy costs only its copy of the line.
    (void)::sendto(m_socket.get(), entry.data(), entry.size(), MSG_NOSIGNAL,
        reinterpret_cast<const sockaddr*>(&address), sizeof address);
}

} // namespace quillox
