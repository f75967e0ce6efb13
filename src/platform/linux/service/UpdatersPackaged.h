#pragma once

#include "platform/linux/system/RunLoopGlib.h"
#include "ports/Updater.h"

#include <chrono>

namespace quillox {

class Dialogs;

/// For an installation whose files belong to the system's package manager: it brings the updates,
/// and nothing happens here by itself. A check by hand asks PackageKit, where it runs, whether a
/// newer version waits, and tells the answer in one alert. Main thread only.
class UpdatersPackaged final : public Updaters {
public:
    /// How long PackageKit may take in all. It may have to start, and to read its lists, first.
    static constexpr std::chrono::seconds defaultPatience { 20 };

    /// The dialogs must outlive the updaters.
    explicit UpdatersPackaged(Dialogs&, std::chrono::milliseconds patience = defaultPatience);

    std::unique_ptr<Updater> makeUpdater(Updater::Delegate&) override;

private:
    Dialogs& m_dialogs;
    RunLoopGlib m_runLoop;
    std::chrono::milliseconds m_patience;
};

} // namespace quillox
