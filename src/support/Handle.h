#pragma once

#include <functional>
#include <utility>

namespace quillox {

/// Something registered with the machine: a timer, a subscription, an inhibitor. Destroying the
/// handle, or assigning another to it, ends the registration; after that its callback never comes.
/// Main thread only.
class Handle {
public:
    Handle() = default;
    explicit Handle(std::function<void()> end)
        : m_end(std::move(end))
    {
    }
    Handle(Handle&& other) noexcept
        : m_end(std::exchange(other.m_end, nullptr))
    {
    }
    Handle& operator=(Handle&& other) noexcept
    {
        if (this != &other) {
            reset();
            m_end = std::exchange(other.m_end, nullptr);
        }
        return *this;
    }
    ~Handle() { reset(); }

    /// Ends the registration now. Harmless on an empty handle.
    void reset()
    {
        if (auto end = std::exchange(m_end, nullptr))
            end();
    }

    explicit operator bool() const { return static_cast<bool>(m_end); }

private:
    std::function<void()> m_end;
};

} // namespace quillox
