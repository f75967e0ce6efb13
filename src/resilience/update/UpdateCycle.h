#pragma once

#include "ports/UpdateFeed.h"
#include "resilience/update/UpdateManifest.h"
#include "resilience/update/UpdateRules.h"
#include "resilience/update/UpdateSource.h"
#include "support/Handle.h"
#include "support/Published.h"

#include <functional>
#include <optional>
#include <string>

namespace quillox {

class Installation;
class RunLoop;
class SignatureCheck;
class SystemLog;

/// The machine as the updater sees it.
struct UpdateMachine {
    RunLoop& runLoop;
    UpdateFeed& feed;
    SignatureCheck& signatures;
    Installation& installation;
    SystemLog& log;
    UpdateSource source;
    Version system; ///< The C library's.
};

/// Looks for a newer version, and brings it to where it can be installed: verified, unpacked,
/// beside the version that runs, which stays untouched. What goes wrong is one line in the system
/// log. Main thread only.
class UpdateCycle {
public:
    struct Outcome {
        enum class Kind {
            UpToDate,
            Found, ///< There is a newer version; `fetch` would get it.
            Staged, ///< It is ready to be installed.
            Refused, ///< What the feed offers must not be used.
            Failed, ///< The trouble may pass.
        };
        Kind kind = Kind::Failed;
        std::string reason; ///< When refused or failed: a clause without its full stop.
    };
    using OnOutcome = std::function<void(Outcome)>;

    /// The machine's parts outlive the cycle.
    explicit UpdateCycle(UpdateMachine);

    bool isBusy() const { return static_cast<bool>(m_onOutcome); }

    /// Gets the manifest and judges it. Not while busy. The outcome comes later, once.
    void check(OnOutcome);

    /// Gets what the last check has found, or finds that it is already there. Not while busy.
    void fetch(OnOutcome);

    /// Ends what is under way, without an outcome. What was fetched serves the next time.
    void cancel();

    /// The newer version of the last check, if it found one.
    std::optional<Version> found() const;

    /// A version that is ready to be installed and still wanted.
    std::optional<Version> staged() const;

    /// How much of the archive is here, from 0 to 1.
    Published<double>& progress() { return m_progress; }

    /// What is remembered from one process to the next. A failure to write it is logged.
    UpdateNotes notes() const;
    bool write(const UpdateNotes&);

private:
    void handleManifest(const UpdateFeed::Outcome&);
    void handleTrustedManifest(UpdateManifest);
    void handleArchive(const UpdateFeed::Outcome&);
    void handleHash(const std::optional<std::string>& hash);
    void handleStaged(const std::optional<std::string>& failure);
    bool passOn(const UpdateFeed::Outcome&);
    void refuse(const std::string& reason);
    void fail(const std::string& reason);
    void finish(Outcome);

    UpdateMachine m_machine;
    Published<double> m_progress { 0.0 };
    OnOutcome m_onOutcome;
    std::optional<UpdateManifest> m_found;
    UpdateFeed::File m_archive;
    std::string m_lastFailure; ///< Said once, however often it comes in a row.
    Handle m_step; ///< What is under way.
};

} // namespace quillox
