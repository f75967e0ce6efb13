#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace quillox {

/// Calls back once on a thread of its own when it has lived for too long; for calls into libraries
/// that know no time limit. Its end waits for a call that has begun.
class Alarm {
public:
    Alarm(std::chrono::milliseconds patience, std::function<void()> callback)
        : m_thread([this, patience, callback = std::move(callback)] {
            std::unique_lock lock(m_mutex);
            if (!m_ended.wait_for(lock, patience, [this] { return m_isOver; }))
                callback();
        })
    {
    }

    ~Alarm()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_isOver = true;
        }
        m_ended.notify_all();
        m_thread.join();
    }

    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

private:
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isOver = false;
    std::thread m_thread; // Last: it uses the others.
};

} // namespace quillox
