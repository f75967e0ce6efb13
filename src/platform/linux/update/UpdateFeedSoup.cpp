#include "platform/linux/update/UpdateFeedSoup.h"

#include "platform/linux/update/HttpFetch.h"
#include "platform/linux/update/WorkerJob.h"

#include <unistd.h>

#include <memory>
#include <utility>

namespace quillox {

namespace {

    using Outcome = UpdateFeed::Outcome;
    using Clock = std::chrono::steady_clock;

    constexpr std::chrono::milliseconds progressInterval { 100 };

    std::shared_ptr<GCancellable> makeCancellable()
    {
        return { g_cancellable_new(), GObjectUnref() };
    }

    /// Runs the fetch until it is over, the handle goes or the time is up.
    Handle runFetch(RunLoop& runLoop, std::chrono::seconds limit,
        std::function<Outcome(GCancellable*)> fetch, UpdateFeed::OnOutcome onOutcome)
    {
        const auto cancellable = makeCancellable();
        const auto isLate = std::make_shared<bool>(false); // The main thread's alone.
        const auto timer = std::make_shared<Handle>(runLoop.after(limit, [cancellable, isLate] {
            *isLate = true;
            g_cancellable_cancel(cancellable.get());
        }));
        const auto job = std::make_shared<Handle>(runOnThread<Outcome>(
            runLoop,
            [cancellable, fetch = std::move(fetch)](
                const std::atomic<bool>&) { return fetch(cancellable.get()); },
            [isLate, timer, onOutcome = std::move(onOutcome)](Outcome outcome) {
                timer->reset();
                if (*isLate && outcome.kind == Outcome::Kind::Interrupted)
                    outcome.reason = "the server takes too long";
                onOutcome(std::move(outcome));
            },
            [cancellable] { g_cancellable_cancel(cancellable.get()); }));
        return Handle([timer, job] {
            timer->reset();
            job->reset();
        });
    }

} // namespace

Handle UpdateFeedSoup::fetchText(const std::string& address, std::size_t limit, OnOutcome onOutcome)
{
    const auto fetch = [address, limit, silence = m_patience.silence](GCancellable* cancellable) {
        return HttpFetch(cancellable, silence).text(address, limit);
    };
    return runFetch(m_runLoop, m_patience.text, fetch, std::move(onOutcome));
}

Handle UpdateFeedSoup::fetchFile(
    const File& file, std::function<void(std::uint64_t)> onProgress, OnOutcome onOutcome)
{
    // Its contents are the main thread's alone; the fetch only passes it on.
    const auto listener = std::make_shared<std::function<void(std::uint64_t)>>(onProgress);
    const auto fetch = [&runLoop = m_runLoop, file, listener, silence = m_patience.silence](
                           GCancellable* cancellable) {
        auto lastTold = Clock::now() - progressInterval;
        const auto tell = [&](std::uint64_t bytes) {
            if (Clock::now() - lastTold < progressInterval)
                return;
            lastTold = Clock::now();
            runLoop.post([listener, bytes] {
                if (*listener)
                    (*listener)(bytes);
            });
        };
        auto outcome = HttpFetch(cancellable, silence).file(file, tell);
        if (outcome.kind == Outcome::Kind::Refused)
            ::unlink(file.path.c_str());
        return outcome;
    };
    const auto run = std::make_shared<Handle>(
        runFetch(m_runLoop, m_patience.file, fetch, std::move(onOutcome)));
    return Handle([listener, run] {
        *listener = nullptr;
        run->reset();
    });
}

} // namespace quillox
