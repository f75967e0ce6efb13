#include "platform/linux/lock/GlobalShortcutsKde.h"

#include "platform/linux/lock/BusAddress.h"
#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <memory>
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
    if (!isBusReachable(G_BUS_TYPE_SESSION)) {
        logFailure(isBlocked, "there is no message bus");
        return;
    }
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
            } else {
                self->logFailure(self->m_isBlocked, error->message);
            }
        },
        this);
}

/// What an answer belongs to.
struct GlobalShortcutsKde::Call {
    GlobalShortcutsKde& owner; ///< Gone when the call was cancelled.
    bool isBlocked;
};

void GlobalShortcutsKde::send()
{
    g_dbus_connection_call(
        m_bus.get(), "org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel",
        "blockGlobalShortcuts", g_variant_new("(b)", m_isBlocked), nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, m_pending.get(),
        [](GObject* source, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<Call> call(static_cast<Call*>(data));
            GError* error = nullptr;
            const GVariantOwner answer(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
            const GErrorOwner held(error);
            if (!g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                call->owner.handleAnswer(call->isBlocked, error);
        },
        new Call { *this, m_isBlocked });
}

void GlobalShortcutsKde::handleAnswer(bool isBlocked, const GError* error)
{
    const bool isServiceGone = g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN)
        || g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER);
    if (!isBlocked && (!error || isServiceGone)) {
        if (const auto unblocked = onUnblocked)
            unblocked();
    } else if (error) {
        logFailure(isBlocked, error->message);
    }
}

void GlobalShortcutsKde::logFailure(bool isBlocked, const char* reason)
{
    if (m_loggedFailures.insert(isBlocked).second) {
        m_log.write(fmt::format("Quillox: the desktop's global shortcuts {} blocked: {}.",
            isBlocked ? "are not" : "may still be", reason));
    }
}

} // namespace quillox
