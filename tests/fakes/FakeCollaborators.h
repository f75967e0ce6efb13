#pragma once

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

public:
    explicit FakeCollaborators(Journal& journal)
        : idleWatch(journal)
        , usage(journal)
    {
    }

    RunCollaborators all() { return { &idleWatch, &usage }; }

    Idle idleWatch;
    Usage usage;
};

} // namespace quillox
