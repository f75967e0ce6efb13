#pragma once

#include "platform/linux/service/BusCall.h"
#include "ports/RunLoop.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// The service manager of this user, systemd, on the user's bus, also for a session that has
/// another bus. Answers come later, and not after this is gone. Main thread only.
class UserManager {
public:
    enum class Role {
        Absent, ///< Nobody manages this user's services.
        Silent, ///< It is there, but does not answer.
        Bystander, ///< The graphical session, if there is one, runs without it.
        RunsSession, ///< It starts and stops what belongs to the graphical session.
    };

    /// `patience` is for each answer.
    UserManager(RunLoop&, std::string runtimeFolder, std::chrono::milliseconds patience);
    ~UserManager();

    /// Connects anew. The calls below are for a role that says that there is somebody to call.
    void findRole(std::function<void(Role)>);

    /// What the manager says of a unit's file, for example "enabled" or "masked"; empty when it
    /// knows no such file; none when it does not answer.
    void readUnitFileState(
        const std::string& unit, std::function<void(std::optional<std::string>)>);

    /// None for success, else why not.
    using Outcome = std::function<void(std::optional<std::string> failure)>;

    /// `file` is the name of a unit, or the absolute path of its file. The unit's dependencies on
    /// others take hold at once, but nothing is started.
    void enable(const std::string& file, Outcome);
    void disable(const std::string& unit, Outcome);

    /// Reads all files of units again.
    void reload(Outcome);

private:
    void handleConnection(GDBusConnection*, const GError*, const std::function<void(Role)>&);
    void askForSession(std::function<void(Role)>);
    bool mayAppear() const;
    void call(const char* method, GVariant* arguments, std::function<void(BusAnswer)>);
    void change(const char* method, GVariant* arguments, Outcome);

    RunLoop& m_runLoop;
    std::string m_runtimeFolder;
    std::chrono::milliseconds m_patience;
    GObjectOwner<GCancellable> m_cancellable { g_cancellable_new() };
    GObjectOwner<GDBusConnection> m_connection;
    RunLoop::MonotonicTime m_giveUp; ///< Of looking for a manager on the bus.
    Handle m_deadline;
};

} // namespace quillox
