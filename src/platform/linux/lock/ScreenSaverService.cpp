#include "platform/linux/lock/ScreenSaverService.h"

#include "platform/linux/lock/BusAddress.h"
#include "platform/linux/system/GlibOwner.h"
#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <utility>

namespace quillox {

namespace {

    constexpr auto serviceName = "org.freedesktop.ScreenSaver";
    constexpr auto servicePath = "/org/freedesktop/ScreenSaver";

} // namespace

/// Outlives its service object while an answer is under way. The call is not cancelled, because the
/// cookie of an inhibition that nobody waits for would be lost; it is given back instead.
struct ScreenSaverService::Request {
    Request(std::string whatFor, SystemLog& systemLog, std::shared_ptr<bool> logged)
        : reason(std::move(whatFor))
        , log(systemLog)
        , hasLoggedFailure(std::move(logged))
    {
    }

    std::string reason;
    SystemLog& log; ///< Not used once this is released.
    std::shared_ptr<bool> hasLoggedFailure;
    bool isReleased = false;
    bool isInhibited = false;
    guint32 cookie = 0;
    GObjectOwner<GDBusConnection> bus;
};

ScreenSaverService::ScreenSaverService(SystemLog& log)
    : m_log(log)
{
}

ScreenSaverService::~ScreenSaverService()
{
    release();
}

bool ScreenSaverService::inhibit(std::string reason)
{
    if (!isBusReachable(G_BUS_TYPE_SESSION))
        return false;
    release();
    m_request = std::make_shared<Request>(std::move(reason), m_log, m_hasLoggedFailure);
    g_bus_get(
        G_BUS_TYPE_SESSION, nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Request>> request(
                static_cast<std::shared_ptr<Request>*>(data));
            (*request)->bus.reset(g_bus_get_finish(result, nullptr));
            if ((*request)->bus && !(*request)->isReleased)
                call(*request);
        },
        new std::shared_ptr<Request>(m_request));
    return true;
}

void ScreenSaverService::call(std::shared_ptr<Request> waiting)
{
    auto* bus = waiting->bus.get();
    auto* arguments = g_variant_new("(ss)", "Quillox", waiting->reason.c_str());
    g_dbus_connection_call(
        bus, serviceName, servicePath, serviceName, "Inhibit", arguments, G_VARIANT_TYPE("(u)"),
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Request>> owner(
                static_cast<std::shared_ptr<Request>*>(data));
            auto& request = **owner;
            GError* error = nullptr;
            const GVariantOwner answer(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
            const GErrorOwner held(error);
            if (answer) {
                g_variant_get(answer.get(), "(u)", &request.cookie);
                request.isInhibited = true;
                if (request.isReleased)
                    endInhibition(*owner);
            } else if (!request.isReleased && !std::exchange(*request.hasLoggedFailure, true)) {
                request.log.write(fmt::format(
                    "Quillox: the desktop's screen saver is not inhibited: {}.", error->message));
            }
        },
        new std::shared_ptr<Request>(std::move(waiting)));
}

void ScreenSaverService::release()
{
    const auto request = std::exchange(m_request, nullptr);
    if (!request)
        return;
    request->isReleased = true;
    if (request->isInhibited)
        endInhibition(request);
}

void ScreenSaverService::endInhibition(std::shared_ptr<Request> ended)
{
    auto* bus = ended->bus.get();
    auto* arguments = g_variant_new("(u)", ended->cookie);
    // The request keeps the connection until the answer is there: without another owner it would
    // be closed before it has sent this.
    g_dbus_connection_call(
        bus, serviceName, servicePath, serviceName, "UnInhibit", arguments, nullptr,
        G_DBUS_CALL_FLAGS_NO_AUTO_START, -1, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
            const std::unique_ptr<std::shared_ptr<Request>> owner(
                static_cast<std::shared_ptr<Request>*>(data));
            // A service that has gone has nothing inhibited.
            const GVariantOwner answer(
                g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, nullptr));
        },
        new std::shared_ptr<Request>(std::move(ended)));
}

} // namespace quillox
