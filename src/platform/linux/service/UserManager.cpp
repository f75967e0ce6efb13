#include "platform/linux/service/UserManager.h"

#include <fmt/format.h>
#include <unistd.h>

#include <utility>

namespace quillox {

namespace {

    constexpr auto serviceName = "org.freedesktop.systemd1";
    constexpr std::chrono::milliseconds betweenAttempts { 50 };
    constexpr auto graphicalSession = "graphical-session.target";

    std::string socketAddress(const std::string& path)
    {
        const GTextOwner escaped(g_dbus_address_escape_value(path.c_str()));
        return fmt::format("unix:path={}", escaped.get());
    }

    /// Whether the unit that was asked for is active, in an answer of ListUnitsByNames.
    bool tellsOfActiveUnit(GVariant* answer)
    {
        if (!g_variant_is_of_type(answer, G_VARIANT_TYPE("(a(ssssssouso))")))
            return false;
        const GVariantOwner units(g_variant_get_child_value(answer, 0));
        if (g_variant_n_children(units.get()) == 0)
            return false;
        const GVariantOwner unit(g_variant_get_child_value(units.get(), 0));
        const char* activeState = nullptr;
        g_variant_get_child(unit.get(), 3, "&s", &activeState);
        return std::string_view(activeState) == "active";
    }

    /// A bus on which the manager is not to be found.
    bool saysThatNobodyIsThere(const BusAnswer& answer)
    {
        return answer.errorName == "org.freedesktop.DBus.Error.ServiceUnknown"
            || answer.errorName == "org.freedesktop.DBus.Error.NameHasNoOwner";
    }

    struct Connecting {
        GObjectOwner<GCancellable> cancellable;
        std::function<void(GDBusConnection*, const GError*)> onEnd;
    };

    void endConnecting(GObject*, GAsyncResult* result, gpointer data)
    {
        const std::unique_ptr<Connecting> connecting(static_cast<Connecting*>(data));
        GError* error = nullptr;
        const GObjectOwner<GDBusConnection> connection(
            g_dbus_connection_new_for_address_finish(result, &error));
        const GErrorOwner held(error);
        // Whoever cancelled it may be gone.
        if (!g_cancellable_is_cancelled(connecting->cancellable.get()))
            connecting->onEnd(connection.get(), error);
    }

} // namespace

UserManager::UserManager(
    RunLoop& runLoop, std::string runtimeFolder, std::chrono::milliseconds patience)
    : m_runLoop(runLoop)
    , m_runtimeFolder(std::move(runtimeFolder))
    , m_patience(patience)
{
}

UserManager::~UserManager()
{
    g_cancellable_cancel(m_cancellable.get());
}

void UserManager::findRole(std::function<void(Role)> onRole)
{
    // Its own, since an attempt that is given up must not take the calls that follow with it.
    g_cancellable_cancel(m_cancellable.get());
    m_cancellable.reset(g_cancellable_new());
    m_connection.reset();
    m_giveUp = m_runLoop.monotonicNow() + m_patience;
    auto connecting = std::make_unique<Connecting>();
    connecting->cancellable.reset(g_object_ref(m_cancellable.get()));
    connecting->onEnd = [this, onRole](GDBusConnection* connection, const GError* error) {
        handleConnection(connection, error, onRole);
    };
    m_deadline = m_runLoop.after(m_patience, [this, onRole] {
        g_cancellable_cancel(m_cancellable.get());
        const auto answer = onRole;
        answer(Role::Silent);
    });
    // Not by the manager's own socket: it overlooks a call that comes as soon as a connection is
    // made, until there is another one.
    constexpr auto flags
        = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT
            | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
    const auto address = socketAddress(m_runtimeFolder + "/bus");
    g_dbus_connection_new_for_address(
        address.c_str(), flags, nullptr, m_cancellable.get(), endConnecting, connecting.release());
}

void UserManager::handleConnection(
    GDBusConnection* connection, const GError* error, const std::function<void(Role)>& onRole)
{
    m_deadline.reset();
    if (connection) {
        m_connection.reset(g_object_ref(connection));
        askForSession(onRole);
        return;
    }
    const bool isNobodyThere = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_FOUND)
        || g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_REFUSED);
    onRole(isNobodyThere ? Role::Absent : Role::Silent);
}

void UserManager::askForSession(std::function<void(Role)> onRole)
{
    const char* const units[] = { graphicalSession, nullptr };
    call("ListUnitsByNames", g_variant_new("(^as)", units),
        [this, onRole = std::move(onRole)](const BusAnswer& answer) {
            if (answer.value)
                return onRole(
                    tellsOfActiveUnit(answer.value.get()) ? Role::RunsSession : Role::Bystander);
            if (!saysThatNobodyIsThere(answer))
                return onRole(Role::Silent);
            if (!mayAppear())
                return onRole(Role::Absent);
            m_deadline
                = m_runLoop.after(betweenAttempts, [this, onRole] { askForSession(onRole); });
        });
}

/// A bus that starts when it is asked for is there before the manager that started it.
bool UserManager::mayAppear() const
{
    const auto ownSocket = m_runtimeFolder + "/systemd/private";
    return ::access(ownSocket.c_str(), F_OK) == 0 && m_runLoop.monotonicNow() < m_giveUp;
}

void UserManager::readUnitFileState(
    const std::string& unit, std::function<void(std::optional<std::string>)> onState)
{
    call("GetUnitFileState", g_variant_new("(s)", unit.c_str()),
        [onState = std::move(onState)](const BusAnswer& answer) {
            if (answer.errorName == "org.freedesktop.DBus.Error.FileNotFound")
                return onState("");
            if (!answer.value || !g_variant_is_of_type(answer.value.get(), G_VARIANT_TYPE("(s)")))
                return onState(std::nullopt);
            const char* state = nullptr;
            g_variant_get(answer.value.get(), "(&s)", &state);
            onState(state);
        });
}

void UserManager::enable(const std::string& file, Outcome outcome)
{
    const char* const files[] = { file.c_str(), nullptr };
    constexpr gboolean forThisRunOnly = FALSE;
    constexpr gboolean replacesLinks = TRUE;
    change("EnableUnitFiles", g_variant_new("(^asbb)", files, forThisRunOnly, replacesLinks),
        std::move(outcome));
}

void UserManager::disable(const std::string& unit, Outcome outcome)
{
    const char* const units[] = { unit.c_str(), nullptr };
    constexpr gboolean forThisRunOnly = FALSE;
    change("DisableUnitFiles", g_variant_new("(^asb)", units, forThisRunOnly), std::move(outcome));
}

void UserManager::reload(Outcome outcome)
{
    call("Reload", nullptr, [outcome = std::move(outcome)](const BusAnswer& answer) {
        outcome(answer.value ? std::nullopt : std::optional(answer.reason));
    });
}

void UserManager::change(const char* method, GVariant* arguments, Outcome outcome)
{
    call(method, arguments, [this, outcome = std::move(outcome)](const BusAnswer& answer) {
        // Links were changed on the disk; what the manager holds in memory follows a reload only.
        if (answer.value)
            return reload(outcome);
        outcome(answer.reason);
    });
}

void UserManager::call(
    const char* method, GVariant* arguments, std::function<void(BusAnswer)> onAnswer)
{
    constexpr auto path = "/org/freedesktop/systemd1";
    constexpr auto interface = "org.freedesktop.systemd1.Manager";
    callBus(m_connection.get(), { serviceName, path, interface }, method, arguments, m_patience,
        m_cancellable.get(), std::move(onAnswer));
}

} // namespace quillox
