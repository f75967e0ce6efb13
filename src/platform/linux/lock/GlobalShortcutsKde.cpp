#include "platform/linux/lock/GlobalShortcutsKde.h"

#include "platform/linux/lock/BusAddress.h"
#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <utility>

namespace quillox {

GlobalShortcutsKde::GlobalShortcutsKde(SystemLog& log)
    : m_log(log)
    , m_pending(g_cancellable_new())
{
}

GlobalShortcutsKde::~GlobalShortcutsKde()
{
    g_cancellable_cancel(m_pending.get());
    // Only to the socket of the bus: the answer is not waited for.
    if (m_bus)
        g_dbus_connection_flush_sync(m_bus.get(), nullptr, nullptr);
}

void GlobalShortcutsKde::setBlocked(bool isBlocked)
{
    m_isBlocked = isBlocked;
    if (m_bus) {
        send();
        return;
    }
    if (!isBusReachable(G_BUS_TYPE_SESSION))
        return;
    g_bus_get(
        G_BUS_TYPE_SESSION, m_pending.get(),
        [](GObject*, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            GObjectOwner<GDBusConnection> bus(g_bus_get_finish(result, &error));
            const GErrorOwner held(error);
            if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            auto* self = static_cast<GlobalShortcutsKde*>(data);
            if (bus) {
                self->m_bus = std::move(bus);
                self->send();
            }
        },
        this);
}

void GlobalShortcutsKde::send()
{
    g_dbus_connection_call(
        m_bus.get(), "org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel",
        "blockGlobalShortcuts", g_variant_new("(b)", m_isBlocked), nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, m_pending.get(),
        [](GObject* source, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            const GVariantOwner answer(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
            const GErrorOwner held(error);
            if (!error || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            auto* self = static_cast<GlobalShortcutsKde*>(data);
            if (!std::exchange(self->m_hasLoggedFailure, true)) {
                self->m_log.write(
                    fmt::format("Quillox: the desktop's global shortcuts are not blocked: {}.",
                        error->message));
            }
        },
        this);
}

} // namespace quillox
