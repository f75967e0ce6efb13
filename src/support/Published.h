#pragma once

#include "support/Handle.h"

#include <functional>
#include <map>
#include <memory>
#include <utility>

namespace quillox {

/// A value that screens observe. Observers are told after every `set`, in the order in which they
/// subscribed, and may subscribe, unsubscribe or set again while they are told. Main thread only.
template <typename Value> class Published {
public:
    using Observer = std::function<void(const Value&)>;

    explicit Published(Value value = {})
        : m_value(std::move(value))
    {
    }

    const Value& get() const { return m_value; }

    void set(Value value)
    {
        m_value = std::move(value);
        const auto observers = *m_observers;
        for (const auto& [id, observer] : observers) {
            if (m_observers->contains(id))
                observer(m_value);
        }
    }

    /// Changes the value in place and tells the observers once.
    template <typename Change> void update(Change change)
    {
        auto value = m_value;
        change(value);
        set(std::move(value));
    }

    /// The observer is not told of the present value.
    [[nodiscard]] Handle observe(Observer observer)
    {
        const auto id = m_nextId++;
        m_observers->emplace(id, std::move(observer));
        return Handle([observers = std::weak_ptr(m_observers), id] {
            if (auto present = observers.lock())
                present->erase(id);
        });
    }

private:
    using Observers = std::map<unsigned, Observer>;

    Value m_value;
    std::shared_ptr<Observers> m_observers = std::make_shared<Observers>();
    unsigned m_nextId = 0;
};

} // namespace quillox
