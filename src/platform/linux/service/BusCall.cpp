#include "platform/linux/service/BusCall.h"

#include <memory>
#include <utility>

namespace quillox {

namespace {

    using OnAnswer = std::function<void(BusAnswer)>;

    void handleAnswer(GObject* source, GAsyncResult* result, gpointer data)
    {
        const std::unique_ptr<OnAnswer> onAnswer(static_cast<OnAnswer*>(data));
        GError* error = nullptr;
        BusAnswer answer;
        answer.value.reset(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
        const GErrorOwner held(error);
        if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
            return;
        if (error) {
            const GTextOwner name(g_dbus_error_get_remote_error(error));
            answer.errorName = name ? name.get() : "";
            answer.reason = reasonOf(error);
        }
        (*onAnswer)(std::move(answer));
    }

} // namespace

void callBus(GDBusConnection* connection, const BusObject& object, const char* method,
    GVariant* arguments, std::chrono::milliseconds patience, GCancellable* cancellable,
    std::function<void(BusAnswer)> onAnswer, bool startsService)
{
    g_dbus_connection_call(connection, object.service, object.path, object.interface, method,
        arguments, nullptr,
        startsService ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START,
        static_cast<int>(patience.count()), cancellable, handleAnswer,
        new OnAnswer(std::move(onAnswer)));
}

std::string reasonOf(const GError* error)
{
    const std::unique_ptr<GError, GErrorFree> copy(g_error_copy(error));
    g_dbus_error_strip_remote_error(copy.get());
    std::string reason = copy->message;
    while (reason.ends_with('.') || reason.ends_with('\n'))
        reason.pop_back();
    return reason;
}

} // namespace quillox
