#pragma once

#include "platform/linux/service/BusCall.h"
#include "support/Handle.h"

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace quillox {

class RunLoop;

/// Asks PackageKit, on the system's bus, whether a newer version of a package waits. It knows what
/// the system's package lists knew when they were last fetched. Main thread only.
class PackageUpdates {
public:
    enum class Finding {
        Newer,
        UpToDate,
        NoService, ///< There is no PackageKit here.
        NoAnswer, ///< It failed, or took too long.
    };
    struct Answer {
        Finding finding = Finding::NoAnswer;
        std::string version; ///< The newer one, without what distributions add to it.
    };

    /// `patience` is for the answer as a whole.
    PackageUpdates(RunLoop&, std::chrono::milliseconds patience);
    ~PackageUpdates();

    /// Not while another question is open. The answer comes later, and not after this is gone.
    void find(std::string package, std::function<void(Answer)>);

private:
    void createTransaction();
    void listUpdates(const char* transaction);
    void handleSignal(std::string_view name, GVariant* parameters);
    void answer(Finding);

    RunLoop& m_runLoop;
    std::chrono::milliseconds m_patience;
    std::string m_package;
    std::function<void(Answer)> m_onAnswer;
    std::string m_newerVersion;
    GObjectOwner<GCancellable> m_cancellable;
    GObjectOwner<GDBusConnection> m_bus;
    Handle m_signals;
    Handle m_deadline;
};

} // namespace quillox
