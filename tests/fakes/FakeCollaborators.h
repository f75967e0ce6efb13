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
    template <typename Interface> struct Noting : Interface {
        explicit Noting(Journal& log)
            : journal(log)
        {
        }
        Journal& journal;

        std::unique_ptr<View> made(std::string what)
        {
            journal.add("make " + what);
            return std::make_unique<FakeView>();
        }
    };

    struct Lock final : Noting<KeyLock> {
        using Noting::Noting;
        std::function<void()> exitCombo;
        std::function<void(double)> holdProgress;
        bool takesHold = true;
        bool isHeld = false;

        void setOnExitCombo(std::function<void()> callback) override { exitCombo = callback; }
        void setOnHoldProgress(std::function<void(double)> callback) override
        {
            holdProgress = callback;
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
    };

    struct HotKeys final : Noting<HotKeyGuard> {
        using Noting::Noting;
        void disable() override { journal.add("hot keys off"); }
        void restore() override { journal.add("hot keys on"); }
    };

    struct Sleep final : Noting<SleepGuard> {
        using Noting::Noting;
        void start() override { journal.add("stay awake"); }
        void stop() override { journal.add("may sleep"); }
    };

    struct Idle final : Noting<IdleWatch> {
        using Noting::Noting;
        void start(const KioskSettings&, const Url& home, WebView&) override
        {
            journal.add("watch idle, home " + home.text());
        }
        void stop() override { journal.add("idle watch ends"); }
    };

    struct Usage final : Noting<UsageTracking> {
        using Noting::Noting;
        void begin(const std::string& source, std::chrono::seconds gap) override
        {
            journal.add(fmt::format("count {}, gap {}", source, gap.count()));
        }
        void end() override { journal.add("counting ends"); }
    };

    struct Network final : Noting<Connectivity> {
        using Noting::Noting;
        std::unique_ptr<View> makeOfflineNotice() override { return made("offline notice"); }
        void startNetworkMonitor(WebView&) override { journal.add("watch network"); }
        void stopNetworkMonitor() override { journal.add("network watch ends"); }
    };

    struct Hold final : Noting<HoldFeedback> {
        using Noting::Noting;
        double progress = -1;
        void setProgress(double value) override { progress = value; }
        std::unique_ptr<View> makeIndicator() override
        {
            return made(fmt::format("hold indicator at {}", progress));
        }
    };

    struct Aids final : Noting<NavigationAids> {
        using Noting::Noting;
        std::unique_ptr<View> makeNotchBar(const KioskSettings&, WebView&) override
        {
            return made("notch bar");
        }
        std::unique_ptr<View> installNavBar(
            const KioskSettings&, Container&, WebView&, double topInset, double notchTop) override
        {
            return made(fmt::format("nav bar, inset {}, notch {}", topInset, notchTop));
        }
    };

    struct Prompts final : ExitPrompts {
        std::optional<Request> request;
        int prompts = 0;
        std::unique_ptr<View> makePrompt(Request asked) override
        {
            request = std::move(asked);
            ++prompts;
            return std::make_unique<FakeView>();
        }
    };

public:
    explicit FakeCollaborators(Journal& journal)
        : keyLock(journal)
        , hotKeys(journal)
        , sleep(journal)
        , idleWatch(journal)
        , usage(journal)
        , connectivity(journal)
        , holdFeedback(journal)
        , navigationAids(journal)
    {
    }

    RunCollaborators all()
    {
        return { &keyLock, &hotKeys, &sleep, &idleWatch, &usage, &connectivity, &holdFeedback,
            &navigationAids, &exitPrompts };
    }

    Lock keyLock;
    HotKeys hotKeys;
    Sleep sleep;
    Idle idleWatch;
    Usage usage;
    Network connectivity;
    Hold holdFeedback;
    Aids navigationAids;
    Prompts exitPrompts;
};

} // namespace quillox
