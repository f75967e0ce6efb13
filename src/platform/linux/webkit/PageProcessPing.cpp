#include "platform/linux/webkit/PageProcessPing.h"

#include <cerrno>
#include <gio/gunixfdlist.h>
#include <glib-unix.h>
#include <sys/socket.h>
#include <utility>

namespace quillox {

void PageProcessPing::ping(std::function<void()> onAnswer)
{
    cancelMessage();
    m_onAnswer = std::move(onAnswer);
    if (!askOverSocket())
        askByMessage();
}

void PageProcessPing::reset()
{
    cancelMessage();
    m_onAnswer = nullptr;
    if (m_source != 0)
        g_source_remove(std::exchange(m_source, 0));
    m_socket = {};
}

bool PageProcessPing::askOverSocket()
{
    if (m_source == 0)
        return false;
    ++m_question;
    return ::send(m_socket.get(), &m_question, 1, MSG_NOSIGNAL) == 1;
}

void PageProcessPing::askByMessage()
{
    m_message.reset(g_cancellable_new());
    webkit_web_view_send_message_to_page(
        m_view, makeMessage(), m_message.get(),
        [](GObject* view, GAsyncResult* result, gpointer self) {
            GError* failure = nullptr;
            const GObjectOwner<WebKitUserMessage> reply(webkit_web_view_send_message_to_page_finish(
                WEBKIT_WEB_VIEW(view), result, &failure));
            const GErrorOwner error(failure);
            if (!g_error_matches(error.get(), G_IO_ERROR, G_IO_ERROR_CANCELLED))
                static_cast<PageProcessPing*>(self)->handleReply(reply != nullptr);
        },
        this);
}

WebKitUserMessage* PageProcessPing::makeMessage()
{
    GObjectOwner<GUnixFDList> descriptors;
    if (int ends[2]; m_source == 0
        && ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) == 0) {
        m_socket = FileDescriptor(ends[0]);
        descriptors.reset(g_unix_fd_list_new_from_array(&ends[1], 1));
    }
    return webkit_user_message_new_with_fd_list("ping", nullptr, descriptors.get());
}

void PageProcessPing::handleReply(bool isSocketTaken)
{
    m_message.reset();
    if (isSocketTaken && m_socket && m_source == 0)
        m_source = g_unix_fd_add(
            m_socket.get(), GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR),
            [](int, GIOCondition, gpointer self) -> gboolean {
                return static_cast<PageProcessPing*>(self)->handleReadable();
            },
            this);
    answer();
}

bool PageProcessPing::handleReadable()
{
    std::uint8_t answers[16];
    const auto count = ::recv(m_socket.get(), answers, sizeof answers, 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return G_SOURCE_CONTINUE;
    if (count <= 0) {
        m_source = 0; // The process is gone, or has another page: the next question is a message.
        m_socket = {};
        return G_SOURCE_REMOVE;
    }
    if (answers[count - 1] == m_question)
        answer();
    return G_SOURCE_CONTINUE;
}

void PageProcessPing::answer()
{
    if (const auto onAnswer = std::exchange(m_onAnswer, nullptr))
        onAnswer();
}

void PageProcessPing::cancelMessage()
{
    if (m_message)
        g_cancellable_cancel(m_message.get());
    m_message.reset();
}

} // namespace quillox
