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
    bool isTerminated = false;

    PresentationOptions presentationOptions() const override { return options; }
    void setPresentationOptions(PresentationOptions changed) override
    {
        options = changed;
        m_journal.add(fmt::format("presentation {:#x}", static_cast<unsigned>(changed)));
    }
    void activate(bool) override { m_journal.add("activate"); }
    void bringVisibleWindowsForward() override { m_journal.add("windows forward"); }
    void endTextEditing() override { m_journal.add("end editing"); }
    void terminate() override { isTerminated = true; }

private:
    Journal& m_journal;
};

struct FakeRunningApplications final : RunningApplications {
    std::vector<ProcessId> processes { 100 };
    std::vector<ProcessId> activated;
    std::string askedFor;

    ProcessId currentProcess() const override { return 100; }
    std::vector<ProcessId> list(const std::string& identifier) override
    {
        askedFor = identifier;
        return processes;
    }
    void activateAllWindows(ProcessId process) override { activated.push_back(process); }
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
    std::vector<OpenPanel> panels;
    std::function<void(std::size_t)> press;
    std::function<void(std::optional<std::string>)> choose;

    void present(const Alert& alert, std::function<void(std::size_t)> onButton) override
    {
        alerts.push_back(alert);
        press = std::move(onButton);
    }
    void present(
        const OpenPanel& panel, std::function<void(std::optional<std::string>)> onChosen) override
    {
        panels.push_back(panel);
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
