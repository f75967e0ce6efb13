#pragma once

#include "fakes/Journal.h"
#include "ports/Updater.h"

#include <string>

namespace quillox {

/// An updater that finds what the test announces to its delegate.
class FakeUpdaters final : public Updaters {
public:
    explicit FakeUpdaters(Journal& journal)
        : m_journal(journal)
    {
    }

    Updater::Delegate* delegate = nullptr;

    std::unique_ptr<Updater> makeUpdater(Updater::Delegate& asked) override
    {
        delegate = &asked;
        m_journal.add("make updater");
        return std::make_unique<FakeUpdater>(m_journal);
    }

private:
    struct FakeUpdater final : Updater {
        explicit FakeUpdater(Journal& notes)
            : journal(notes)
        {
        }
        void note(const char* what, bool isOn)
        {
            journal.add(what + std::string(isOn ? "+" : "-"));
        }
        void setAutomaticallyChecksForUpdates(bool isOn) override { note("checks", isOn); }
        void setAutomaticallyDownloadsUpdates(bool isOn) override { note("downloads", isOn); }
        void startUpdater() override { journal.add("start updater"); }
        void checkForUpdates() override { journal.add("check now"); }

        Journal& journal;
    };

    Journal& m_journal;
};

} // namespace quillox
