#pragma once

#include "fakes/Journal.h"
#include "ports/AccessibilityTrust.h"
#include "ports/Application.h"
#include "ports/Dialogs.h"
#include "ports/RunningApplications.h"
#include "ports/Workspace.h"

#include <fmt/format.h>
#include <functional>
#include <utility>

namespace quillox {

class FakeApplication final : public Application {
public:
    explicit FakeApplication(Journal& journal)
        : m_journal(journal)
    {
    }

    PresentationOptions options = PresentationOptions::Default;

    PresentationOptions presentationOptions() const override { return options; }
    void setPresentationOptions(PresentationOptions changed) override
    {
        options = changed;
        m_journal.add(fmt::format("presentation {:#x}", static_cast<unsigned>(changed)));
    }
    void activate(bool) override { m_journal.add("activate"); }
    void bringVisibleWindowsForward() override { m_journal.add("windows forward"); }
    void endTextEditing() override { m_journal.add("end editing"); }
    void terminate() override { }

private:
    Journal& m_journal;
};

/// This process alone.
struct FakeRunningApplications final : RunningApplications {
    ProcessId currentProcess() const override { return 100; }
    std::vector<ProcessId> list(const std::string&) override { return { 100 }; }
    void activateAllWindows(ProcessId) override { }
};

struct FakeAccessibilityTrust final : AccessibilityTrust {
    bool isTrusted = true;
    int prompts = 0;

    bool isProcessTrusted() const override { return isTrusted; }
    bool isProcessTrustedWithPrompt() override
    {
        ++prompts;
        return isTrusted;
    }
};

/// Dialogs that wait for the test to answer them.
struct FakeDialogs final : Dialogs {
    std::vector<Alert> alerts;
    std::function<void(std::size_t)> press;
    std::function<void(std::optional<std::string>)> choose;

    void present(const Alert& alert, std::function<void(std::size_t)> onButton) override
    {
        alerts.push_back(alert);
        press = std::move(onButton);
    }
    void present(
        const OpenPanel&, std::function<void(std::optional<std::string>)> onChosen) override
    {
        choose = std::move(onChosen);
    }
};

struct FakeWorkspace final : Workspace {
    std::vector<std::string> opened;
    int relaunches = 0;

    void open(const std::string& url) override { opened.push_back(url); }
    void relaunch() override { ++relaunches; }
};

} // namespace quillox
