#pragma once

#include "fakes/Journal.h"
#include "kiosk/RunCollaborators.h"
#include "ports/WebView.h"

#include <fmt/format.h>
#include <optional>

namespace quillox {

struct FakeView final : View { };

/// Everything that can join a run. Each notes in the journal what the run asks of it.
class FakeCollaborators {
public:
    explicit FakeCollaborators(Journal& log)
        : journal(log)
    {
    }

    RunCollaborators all()
    {
        return { &keyLock, &hotKeys, &sleep, &idleWatch, &usage, &connectivity, &holdFeedback,
            &navigationAids, &exitPrompts };
    }

    Journal& journal;

    struct Lock final : KeyLock {
        Journal& journal;
        std::function<void()> exitCombo;
        std::function<void(double)> holdProgress;
        bool takesHold = true;
        bool isHeld = false;

        explicit Lock(Journal& log)
            : journal(log)
        {
        }
        void setOnExitCombo(std::function<void()> callback) override
        {
            exitCombo = std::move(callback);
        }
        void setOnHoldProgress(std::function<void(double)> callback) override
        {
            holdProgress = std::move(callback);
        }
        bool start() override
        {
            journal.add("key lock on");
            return isHeld = takesHold;
        }
        void stop() override
        {
            journal.add("key lock off");
            isHeld = false;
        }
        bool isRunning() const override { return isHeld; }
    } keyLock { journal };

    struct HotKeys final : HotKeyGuard {
        Journal& journal;
        explicit HotKeys(Journal& log)
            : journal(log)
        {
        }
        void disable() override { journal.add("hot keys off"); }
        void restore() override { journal.add("hot keys on"); }
    } hotKeys { journal };

    struct Sleep final : SleepGuard {
        Journal& journal;
        explicit Sleep(Journal& log)
            : journal(log)
        {
        }
        void start() override { journal.add("stay awake"); }
        void stop() override { journal.add("may sleep"); }
    } sleep { journal };

    struct Idle final : IdleWatch {
        Journal& journal;
        explicit Idle(Journal& log)
            : journal(log)
        {
        }
        void start(const KioskSettings&, const Url& home, WebView&) override
        {
            journal.add("watch idle, home " + home.text());
        }
        void stop() override { journal.add("idle watch ends"); }
    } idleWatch { journal };

    struct Usage final : UsageTracking {
        Journal& journal;
        explicit Usage(Journal& log)
            : journal(log)
        {
        }
        void begin(const std::string& source, std::chrono::seconds gap) override
        {
            journal.add(fmt::format("count {}, gap {}", source, gap.count()));
        }
        void end() override { journal.add("counting ends"); }
    } usage { journal };

    struct Network final : Connectivity {
        Journal& journal;
        explicit Network(Journal& log)
            : journal(log)
        {
        }
        std::unique_ptr<View> makeOfflineNotice() override
        {
            journal.add("make offline notice");
            return std::make_unique<FakeView>();
        }
        void startNetworkMonitor(WebView&) override { journal.add("watch network"); }
        void stopNetworkMonitor() override { journal.add("network watch ends"); }
    } connectivity { journal };

    struct Hold final : HoldFeedback {
        Journal& journal;
        double progress = -1;
        explicit Hold(Journal& log)
            : journal(log)
        {
        }
        void setProgress(double value) override { progress = value; }
        std::unique_ptr<View> makeIndicator() override
        {
            journal.add(fmt::format("make hold indicator at {}", progress));
            return std::make_unique<FakeView>();
        }
    } holdFeedback { journal };

    struct Aids final : NavigationAids {
        Journal& journal;
        explicit Aids(Journal& log)
            : journal(log)
        {
        }
        std::unique_ptr<View> makeNotchBar(const KioskSettings&, WebView&) override
        {
            journal.add("make notch bar");
            return std::make_unique<FakeView>();
        }
        std::unique_ptr<View> installNavBar(
            const KioskSettings&, Container&, WebView&, double topInset, double notchTop) override
        {
            journal.add(fmt::format("install nav bar, inset {}, notch {}", topInset, notchTop));
            return std::make_unique<FakeView>();
        }
    } navigationAids { journal };

    struct Prompts final : ExitPrompts {
        std::optional<Request> request;
        int prompts = 0;
        std::unique_ptr<View> makePrompt(Request asked) override
        {
            request = std::move(asked);
            ++prompts;
            return std::make_unique<FakeView>();
        }
    } exitPrompts;
};

} // namespace quillox
