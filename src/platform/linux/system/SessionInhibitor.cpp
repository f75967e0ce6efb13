#include "platform/linux/system/SessionInhibitor.h"

#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <gio/gunixfdlist.h>
#include <utility>

namespace quillox {

SessionInhibitor::SessionInhibitor(std::string what, std::string why, SystemLog& log)
    : m_what(std::move(what))
    , m_why(std::move(why))
    , m_log(log)
{
}

SessionInhibitor::~SessionInhibitor()
{
    setEngaged(false);
}

void SessionInhibitor::setEngaged(bool engaged)
{
    if (!engaged) {
        if (m_pending)
            g_cancellable_cancel(m_pending.get());
        m_pending.reset();
        m_inhibitor = FileDescriptor();
    } else if (!m_pending && !m_inhibitor) {
        request();
    }
}

void SessionInhibitor::request()
{
    m_pending.reset(g_cancellable_new());
    g_bus_get(
        G_BUS_TYPE_SYSTEM, m_pending.get(),
        [](GObject*, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            const GObjectOwner<GDBusConnection> bus(g_bus_get_finish(result, &error));
            const GErrorOwner held(error);
            if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            auto* self = static_cast<SessionInhibitor*>(data);
            if (!bus) {
                self->handleReply(error, nullptr);
                return;
            }
            g_dbus_connection_call_with_unix_fd_list(
                bus.get(), "org.freedesktop.login1", "/org/freedesktop/login1",
                "org.freedesktop.login1.Manager", "Inhibit",
                g_variant_new(
                    "(ssss)", self->m_what.c_str(), "Quillox", self->m_why.c_str(), "block"),
                G_VARIANT_TYPE("(h)"), G_DBUS_CALL_FLAGS_NONE, -1, nullptr, self->m_pending.get(),
                [](GObject* source, GAsyncResult* reply, gpointer owner) {
                    GUnixFDList* descriptors = nullptr;
                    GError* callError = nullptr;
                    const GVariantOwner answer(g_dbus_connection_call_with_unix_fd_list_finish(
                        G_DBUS_CONNECTION(source), &descriptors, reply, &callError));
                    const GObjectOwner<GUnixFDList> heldDescriptors(descriptors);
                    const GErrorOwner heldError(callError);
                    if (!g_error_matches(callError, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                        static_cast<SessionInhibitor*>(owner)->handleReply(callError, descriptors);
                },
                self);
        },
        this);
}

void SessionInhibitor::handleReply(const GError* error, GUnixFDList* descriptors)
{
    m_pending.reset();
    if (descriptors && g_unix_fd_list_get_length(descriptors) > 0) {
        m_inhibitor = FileDescriptor(g_unix_fd_list_get(descriptors, 0, nullptr));
        return;
    }
    if (std::exchange(m_hasLoggedFailure, true))
        return;
    m_log.write(fmt::format("Quillox: the login manager does not inhibit {}: {}.", m_what,
        error ? error->message : "no inhibitor was handed out"));
}

} // namespace quillox
