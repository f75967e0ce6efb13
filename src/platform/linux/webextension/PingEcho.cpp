#include "platform/linux/webextension/PingEcho.h"

#include <cerrno>
#include <gio/gunixfdlist.h>
#include <glib-unix.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quillox {

namespace {

    gboolean echo(int socket, GIOCondition, gpointer)
    {
        char bytes[16];
        const auto count = ::recv(socket, bytes, sizeof bytes, MSG_DONTWAIT);
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return G_SOURCE_CONTINUE;
        // One question waits at most, so there is always room for its answer.
        if (count > 0 && ::send(socket, bytes, size_t(count), MSG_NOSIGNAL | MSG_DONTWAIT) == count)
            return G_SOURCE_CONTINUE;
        ::close(socket); // The program has done with this page.
        return G_SOURCE_REMOVE;
    }

    gboolean takeSocket(WebKitWebPage*, WebKitUserMessage* message, gpointer)
    {
        auto* const descriptors = webkit_user_message_get_fd_list(message);
        if (!descriptors || g_unix_fd_list_get_length(descriptors) != 1)
            return FALSE;
        const int socket = g_unix_fd_list_get(descriptors, 0, nullptr);
        if (socket < 0)
            return FALSE;
        g_unix_fd_add(socket, GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR), echo, nullptr);
        webkit_user_message_send_reply(message, webkit_user_message_new("taken", nullptr));
        return TRUE;
    }

} // namespace

void echoPings(WebKitWebProcessExtension* extension)
{
    g_signal_connect(extension, "page-created",
        G_CALLBACK(+[](WebKitWebProcessExtension*, WebKitWebPage* page, gpointer) {
            g_signal_connect(page, "user-message-received", G_CALLBACK(takeSocket), nullptr);
        }),
        nullptr);
}

} // namespace quillox
