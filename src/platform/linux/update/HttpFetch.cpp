#include "platform/linux/update/HttpFetch.h"

#include "platform/linux/system/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <system_error>

namespace quillox {

using Outcome = UpdateFeed::Outcome;
using Kind = Outcome::Kind;

namespace {

    constexpr std::size_t readAtOnce = 65536;

    Outcome interrupted(std::string reason)
    {
        return { Kind::Interrupted, std::move(reason), {} };
    }

    Outcome refused(std::string reason)
    {
        return { Kind::Refused, std::move(reason), {} };
    }

    std::string reasonOf(int error)
    {
        return std::generic_category().message(error);
    }

    bool writeAll(int file, const char* bytes, std::size_t size)
    {
        while (size > 0) {
            const auto written = ::write(file, bytes, size);
            if (written < 0 && errno == EINTR)
                continue;
            if (written < 0)
                return false;
            bytes += written;
            size -= static_cast<std::size_t>(written);
        }
        return true;
    }

} // namespace

HttpFetch::HttpFetch(GCancellable* cancellable, std::chrono::seconds silence)
    : m_cancellable(cancellable)
    , m_context(g_main_context_new())
{
    // A session belongs to the thread that made it, and its timers to this thread's own context.
    g_main_context_push_thread_default(m_context.get());
    m_session.reset(soup_session_new_with_options(
        "timeout", static_cast<guint>(silence.count()), "user-agent", "Quillox-Updater", nullptr));
    // What was hashed is what is on the wire, however the server labels it.
    soup_session_remove_feature_by_type(m_session.get(), SOUP_TYPE_CONTENT_DECODER);
}

HttpFetch::~HttpFetch()
{
    soup_session_abort(m_session.get());
    m_session.reset();
    g_main_context_pop_thread_default(m_context.get());
}

Outcome HttpFetch::outcomeOf(const GError* error) const
{
    const auto domain = error->domain;
    const bool isDistrust = domain == G_TLS_ERROR
        && (error->code == G_TLS_ERROR_BAD_CERTIFICATE || error->code == G_TLS_ERROR_HANDSHAKE);
    return isDistrust ? refused(fmt::format("the server cannot be trusted ({})", error->message))
                      : interrupted(error->message);
}

Outcome HttpFetch::ask(const std::string& address, std::uint64_t firstByte, Answer& answer)
{
    const GObjectOwner<SoupMessage> message(soup_message_new(SOUP_METHOD_GET, address.c_str()));
    if (!message)
        return refused("its address cannot be understood");
    soup_message_add_flags(message.get(), SOUP_MESSAGE_NO_REDIRECT);
    if (firstByte > 0)
        soup_message_headers_set_range(
            soup_message_get_request_headers(message.get()), static_cast<goffset>(firstByte), -1);

    GError* error = nullptr;
    answer.body.reset(soup_session_send(m_session.get(), message.get(), m_cancellable, &error));
    if (const GErrorOwner held(error); held)
        return outcomeOf(error);
    answer.status = soup_message_get_status(message.get());
    auto* headers = soup_message_get_response_headers(message.get());
    if (soup_message_headers_get_encoding(headers) == SOUP_ENCODING_CONTENT_LENGTH)
        answer.length = soup_message_headers_get_content_length(headers);
    goffset last = 0;
    if (answer.status == SOUP_STATUS_PARTIAL_CONTENT
        && !soup_message_headers_get_content_range(
            headers, &answer.firstByte, &last, &answer.wholeSize))
        return refused("the server sends a part and does not say which");
    if (answer.status >= 300 && answer.status < 400)
        return refused("the server redirects to another address");
    return {};
}

Outcome HttpFetch::read(GInputStream* body, const Take& take)
{
    std::array<char, readAtOnce> block;
    for (;;) {
        GError* error = nullptr;
        const auto count
            = g_input_stream_read(body, block.data(), block.size(), m_cancellable, &error);
        if (const GErrorOwner held(error); held)
            return outcomeOf(error);
        if (count <= 0 || !take(block.data(), static_cast<std::size_t>(count)))
            return {};
    }
}

Outcome HttpFetch::text(const std::string& address, std::size_t limit)
{
    Answer answer;
    if (auto outcome = ask(address, 0, answer); outcome.kind != Kind::Complete)
        return outcome;
    if (answer.status != SOUP_STATUS_OK)
        return interrupted(fmt::format("the server answers with status {}", answer.status));
    std::string text;
    auto outcome = read(answer.body.get(), [&](const char* bytes, std::size_t count) {
        text.append(bytes, count);
        return text.size() <= limit;
    });
    if (outcome.kind == Kind::Complete && text.size() > limit)
        return refused("the manifest is too large");
    outcome.text = std::move(text);
    return outcome;
}

Outcome HttpFetch::file(
    const UpdateFeed::File& wanted, const std::function<void(std::uint64_t)>& onProgress)
{
    const FileDescriptor file(
        ::open(wanted.path.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    struct stat status { };
    if (!file || ::fstat(file.get(), &status) != 0)
        return interrupted(fmt::format("{}: {}", wanted.path, reasonOf(errno)));
    auto present = static_cast<std::uint64_t>(status.st_size);
    if (present == wanted.size)
        return {};
    if (present > wanted.size)
        present = 0;

    Answer answer;
    if (auto outcome = ask(wanted.address, present, answer); outcome.kind != Kind::Complete)
        return outcome;
    const bool isPart = answer.status == SOUP_STATUS_PARTIAL_CONTENT;
    if (answer.status == SOUP_STATUS_REQUESTED_RANGE_NOT_SATISFIABLE
        || (isPart && answer.firstByte != static_cast<goffset>(present)))
        return refused("the server has no more of the archive");
    if (!isPart && answer.status != SOUP_STATUS_OK)
        return interrupted(fmt::format("the server answers with status {}", answer.status));
    if (!isPart)
        present = 0;
    const auto size = static_cast<goffset>(wanted.size);
    if ((isPart && answer.wholeSize >= 0 && answer.wholeSize != size)
        || (answer.length >= 0 && answer.length + static_cast<goffset>(present) != size))
        return refused("the archive has another size than the manifest says");

    if (::ftruncate(file.get(), static_cast<off_t>(present)) != 0
        || ::lseek(file.get(), 0, SEEK_END) < 0)
        return interrupted(fmt::format("{}: {}", wanted.path, reasonOf(errno)));
    bool isWritten = true;
    auto outcome = read(answer.body.get(), [&](const char* bytes, std::size_t count) {
        isWritten = present + count <= wanted.size && writeAll(file.get(), bytes, count);
        present += count;
        if (isWritten)
            onProgress(present);
        return isWritten;
    });
    if (outcome.kind != Kind::Complete)
        return outcome;
    if (present > wanted.size)
        return refused("the archive is larger than the manifest says");
    if (!isWritten)
        return interrupted(fmt::format("{}: {}", wanted.path, reasonOf(errno)));
    return present == wanted.size ? Outcome {} : interrupted("the connection ended early");
}

} // namespace quillox
