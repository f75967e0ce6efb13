#include "platform/linux/service/UpdatersPackaged.h"

#include "app/QuilloxApp.h"
#include "platform/linux/service/PackageUpdates.h"
#include "ports/Dialogs.h"
#include "support/Lifetime.h"

#include <fmt/format.h>

#include <utility>

namespace quillox {

namespace {

    Alert alertFor(const PackageUpdates::Answer& answer)
    {
        using enum PackageUpdates::Finding;
        const auto version = QuilloxApp::version();
        const auto alert = [](std::string message, std::string informativeText) {
            return Alert { Alert::Style::Informational, std::move(message),
                std::move(informativeText), { "OK" } };
        };
        switch (answer.finding) {
        case Newer:
            return alert(fmt::format("Quillox {} is available.", answer.version),
                fmt::format(
                    "It is installed with the system's updates. This is version {}.", version));
        case UpToDate:
            return alert("Quillox is up to date.",
                fmt::format("The system's package sources offer nothing newer than this version, "
                            "{}. Updates come with the system.",
                    version));
        case NoService:
            return alert("Updates come with the system.",
                fmt::format("The system's package manager installed Quillox and keeps it up to "
                            "date. This is version {}.",
                    version));
        case NoAnswer:
            break;
        }
        return alert("Updates come with the system.",
            fmt::format("The system's package manager cannot say right now whether a newer version "
                        "waits. This is version {}.",
                version));
    }

    class UpdaterPackaged final : public Updater {
    public:
        UpdaterPackaged(Dialogs& dialogs, RunLoop& runLoop, std::chrono::milliseconds patience)
            : m_dialogs(dialogs)
            , m_updates(runLoop, patience)
        {
        }

        // The package manager has settings of its own for these.
        void setAutomaticallyChecksForUpdates(bool) override { }
        void setAutomaticallyDownloadsUpdates(bool) override { }
        void startUpdater() override { }

        void checkForUpdates() override
        {
            if (std::exchange(m_isChecking, true))
                return;
            m_updates.find(packageName, [this](const PackageUpdates::Answer& answer) {
                m_dialogs.present(alertFor(answer),
                    m_lifetime.guard([this](std::size_t) { m_isChecking = false; }));
            });
        }

    private:
        static constexpr auto packageName = "quillox";

        Dialogs& m_dialogs;
        PackageUpdates m_updates;
        bool m_isChecking = false; ///< Until the answer's alert is closed.
        Lifetime m_lifetime;
    };

} // namespace

UpdatersPackaged::UpdatersPackaged(Dialogs& dialogs, std::chrono::milliseconds patience)
    : m_dialogs(dialogs)
    , m_patience(patience)
{
}

std::unique_ptr<Updater> UpdatersPackaged::makeUpdater(Updater::Delegate&)
{
    return std::make_unique<UpdaterPackaged>(m_dialogs, m_runLoop, m_patience);
}

} // namespace quillox
