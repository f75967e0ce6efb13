#pragma once

#include "kiosk/OfflineOverlay.h"
#include "ports/LoadError.h"
#include "ports/PathMonitors.h"
#include "ports/RunLoop.h"
#include "ports/WebView.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <chrono>
#include <optional>

namespace quillox {

/// Covers the page with a notice while its server cannot be reached, and tries again until it can.
/// Main thread only.
class Connectivity {
public:
    class Delegate {
    public:
        virtual ~Delegate() = default;
        virtual LoadPhase loadPhase() const = 0;
        virtual void reloadPage() = 0;
        virtual void loadStartPage() = 0;
    };

    /// Where a run's page comes from.
    enum class Source {
        LocalFolder, ///< Never watched, never covered.
        ThisMachine, ///< A server on the loopback interface, which needs no network.
        Network,
    };

    static constexpr auto queueLabel = "com.orvendal.quillox.network";
    static constexpr std::chrono::seconds retryInterval { 5 };

    Connectivity(RunLoop&, PathMonitors&, Delegate&);

    OfflineModel& model() { return m_model; }

    /// Begins a run, with the notice hidden.
    void reset(Source);
    void startNetworkMonitor();
    void stopNetworkMonitor();

    /// A load that failed on its way from the server counts; one that was cancelled or refused does
    /// not.
    void handleLoadFailure(const LoadError&);

    /// There is no page at all to look at, for whatever reason: the notice, and another try.
    void handleMissingPage();

    /// Covers the page without trying for another one, which from now on somebody else does.
    void coverPage();
    void handleFinishedLoad();

    bool isRetrying() const { return static_cast<bool>(m_retryTimer); }

private:
    void handlePathUpdate(PathStatus);
    void startRetry();
    void retry();
    bool isWorthWaitingFor();
    void reload();

    RunLoop& m_runLoop;
    PathMonitors& m_pathMonitors;
    Delegate& m_delegate;
    OfflineModel m_model;
    Source m_source = Source::Network;

    Handle m_retryTimer;
    int m_retries = 0; ///< Since the page was last there.
    RunLoop::Duration m_patience {}; ///< How long the next answer may take.
    RunLoop::MonotonicTime m_lastReload {};

    /// Updates are on their way between threads when the monitor ends.
    std::optional<Lifetime> m_monitoring;
    Handle m_pathMonitor;
};

} // namespace quillox
