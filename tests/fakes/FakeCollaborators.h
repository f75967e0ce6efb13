#pragma once

#include "fakes/FakeLockdown.h"
#include "fakes/Journal.h"
#include "kiosk/RunCollaborators.h"
#include "ports/WebView.h"

#include <fmt/format.h>

namespace quillox {

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

public:
    explicit FakeCollaborators(Journal& journal)
        : idleWatch(journal)
        , usage(journal)
        , connectivity(journal)
        , navigationAids(journal)
    {
    }

    RunCollaborators all() { return { &idleWatch, &usage, &connectivity, &navigationAids }; }

    Idle idleWatch;
    Usage usage;
    Network connectivity;
    Aids navigationAids;
};

} // namespace quillox
