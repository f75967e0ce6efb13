#pragma once

#include "ports/Dialogs.h"
#include "ports/SystemLog.h"
#include "ports/Updater.h"

#include <memory>
#include <string>
#include <utility>

namespace quillox {

/// Where there is nothing to update, or no feed is set up: says so, and does nothing.
class AbsentUpdaters final : public Updaters {
public:
    /// The reason is a sentence for the operator. The others must outlive the updaters.
    AbsentUpdaters(Dialogs& dialogs, SystemLog& log, std::string reason)
        : m_dialogs(dialogs)
        , m_log(log)
        , m_reason(std::move(reason))
    {
    }

    std::unique_ptr<Updater> makeUpdater(Updater::Delegate&) override
    {
        return std::make_unique<Absent>(m_dialogs, m_log, m_reason);
    }

private:
    class Absent final : public Updater {
    public:
        Absent(Dialogs& dialogs, SystemLog& log, std::string reason)
            : m_dialogs(dialogs)
            , m_log(log)
            , m_reason(std::move(reason))
        {
        }

        void setAutomaticallyChecksForUpdates(bool checks) override { m_isWanted = checks; }
        void setAutomaticallyDownloadsUpdates(bool) override { }
        void startUpdater() override
        {
            if (m_isWanted)
                m_log.write("Quillox: no automatic updates: " + m_reason);
        }
        void checkForUpdates() override
        {
            const Alert alert { Alert::Style::Informational, "Quillox does not update itself here",
                m_reason, { "Close" } };
            m_dialogs.present(alert, [](std::size_t) {});
        }

    private:
        Dialogs& m_dialogs;
        SystemLog& m_log;
        std::string m_reason;
        bool m_isWanted = false;
    };

    Dialogs& m_dialogs;
    SystemLog& m_log;
    std::string m_reason;
};

} // namespace quillox
