#include "platform/linux/service/PackageUpdates.h"

#include "ports/RunLoop.h"

#include <utility>

namespace quillox {

namespace {

    constexpr auto serviceName = "org.freedesktop.PackageKit";
    constexpr auto transactionInterface = "org.freedesktop.PackageKit.Transaction";

    /// "1:2.3.0-4" of a distribution is the application's 2.3.0.
    std::string upstreamVersion(std::string version)
    {
        if (const auto epoch = version.find(':'); epoch != std::string::npos)
            version.erase(0, epoch + 1);
        if (const auto revision = version.rfind('-'); revision != std::string::npos)
            version.erase(revision);
        return version;
    }

    /// The version in a package's id, "NAME;VERSION;ARCHITECTURE;SOURCE"; empty for another one's.
    std::string versionIn(std::string_view packageId, std::string_view name)
    {
        const auto version = name.size() + 1;
        if (!packageId.starts_with(name) || packageId.substr(name.size(), 1) != ";")
            return {};
        return std::string(packageId.substr(version, packageId.find(';', version) - version));
    }

    bool isOfType(GVariant* value, const char* type)
    {
        return g_variant_is_of_type(value, G_VARIANT_TYPE(type)) != FALSE;
    }

} // namespace

PackageUpdates::PackageUpdates(RunLoop& runLoop, std::chrono::milliseconds patience)
    : m_runLoop(runLoop)
    , m_patience(patience)
{
}

PackageUpdates::~PackageUpdates()
{
    if (m_cancellable)
        g_cancellable_cancel(m_cancellable.get());
}

void PackageUpdates::find(std::string package, std::function<void(Answer)> onAnswer)
{
    m_package = std::move(package);
    m_onAnswer = std::move(onAnswer);
    m_newerVersion.clear();
    m_cancellable.reset(g_cancellable_new());
    m_deadline = m_runLoop.after(m_patience, [this] { answer(Finding::NoAnswer); });
    g_bus_get(
        G_BUS_TYPE_SYSTEM, m_cancellable.get(),
        [](GObject*, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            GObjectOwner<GDBusConnection> bus(g_bus_get_finish(result, &error));
            const GErrorOwner held(error);
            if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            auto* self = static_cast<PackageUpdates*>(data);
            if (!bus)
                return self->answer(Finding::NoService);
            self->m_bus = std::move(bus);
            self->createTransaction();
        },
        this);
}

void PackageUpdates::createTransaction()
{
    constexpr bool startsService = true;
    callBus(
        m_bus.get(), { serviceName, "/org/freedesktop/PackageKit", serviceName },
        "CreateTransaction", nullptr, m_patience, m_cancellable.get(),
        [this](const BusAnswer& created) {
            const bool isUnknown = created.errorName == "org.freedesktop.DBus.Error.ServiceUnknown";
            if (!created.value || !isOfType(created.value.get(), "(o)"))
                return answer(isUnknown ? Finding::NoService : Finding::NoAnswer);
            const char* transaction = nullptr;
            g_variant_get(created.value.get(), "(&o)", &transaction);
            listUpdates(transaction);
        },
        startsService);
}

void PackageUpdates::listUpdates(const char* transaction)
{
    const auto subscription = g_dbus_connection_signal_subscribe(
        m_bus.get(), serviceName, transactionInterface, nullptr, transaction, nullptr,
        G_DBUS_SIGNAL_FLAGS_NONE,
        [](GDBusConnection*, const char*, const char*, const char*, const char* name,
            GVariant* parameters,
            gpointer self) { static_cast<PackageUpdates*>(self)->handleSignal(name, parameters); },
        this, nullptr);
    m_signals = Handle([bus = m_bus.get(), subscription] {
        g_dbus_connection_signal_unsubscribe(bus, subscription);
    });
    constexpr guint64 withoutFilter = 2;
    callBus(m_bus.get(), { serviceName, transaction, transactionInterface }, "GetUpdates",
        g_variant_new("(t)", withoutFilter), m_patience, m_cancellable.get(),
        [this](const BusAnswer& begun) {
            if (!begun.value)
                answer(Finding::NoAnswer);
        });
}

void PackageUpdates::handleSignal(std::string_view name, GVariant* parameters)
{
    constexpr guint32 success = 1;
    if (name == "Package" && isOfType(parameters, "(uss)")) {
        const char* packageId = nullptr;
        g_variant_get_child(parameters, 1, "&s", &packageId);
        if (auto version = versionIn(packageId, m_package); !version.empty())
            m_newerVersion = upstreamVersion(std::move(version));
    } else if (name == "Finished" && isOfType(parameters, "(uu)")) {
        guint32 exit = 0;
        g_variant_get_child(parameters, 0, "u", &exit);
        if (exit != success)
            return answer(Finding::NoAnswer);
        answer(m_newerVersion.empty() ? Finding::UpToDate : Finding::Newer);
    }
}

void PackageUpdates::answer(Finding finding)
{
    g_cancellable_cancel(m_cancellable.get());
    m_signals.reset();
    m_deadline.reset();
    const auto onAnswer = std::exchange(m_onAnswer, nullptr);
    onAnswer({ finding, m_newerVersion });
}

} // namespace quillox
