#pragma once

#include "ports/RunLoop.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <utility>

namespace quillox {

/// Does work on a thread of its own and gives its result to `onDone` on the main thread, unless the
/// handle goes before. The handle's end tells the work to stop, and `interrupt`, which may be none,
/// to stop waiting; then it waits for the thread, so that nothing of the work outlives it. The loop
/// must outlive the handle.
template <typename Result>
Handle runOnThread(RunLoop& runLoop,
    std::function<Result(const std::atomic<bool>& isCancelled)> work,
    std::function<void(Result)> onDone, std::function<void()> interrupt = nullptr)
{
    struct Job {
        std::atomic<bool> isCancelled = false;
        std::function<void(Result)> onDone; ///< The main thread's alone.
        std::thread thread;
    };
    const auto job = std::make_shared<Job>();
    job->onDone = std::move(onDone);
    job->thread = std::thread([&runLoop, job, work = std::move(work)] {
        auto result = std::make_shared<Result>(work(job->isCancelled));
        runLoop.post([job, result] {
            if (const auto done = std::exchange(job->onDone, nullptr))
                done(std::move(*result));
        });
    });
    return Handle([job, interrupt = std::move(interrupt)] {
        job->onDone = nullptr;
        job->isCancelled = true;
        if (interrupt)
            interrupt();
        job->thread.join();
    });
}

} // namespace quillox
