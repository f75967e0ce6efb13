#pragma once

#include <memory>
#include <utility>

namespace quillox {

/// Lets a callback hold its owner weakly: what `guard` returns does nothing once the owner of this
/// member is gone. Declare it last, so that it goes first. Main thread only.
class Lifetime {
public:
    template <typename Callback> auto guard(Callback callback) const
    {
        return [alive = std::weak_ptr<char>(m_alive), callback = std::move(callback)](
                   auto&&... arguments) mutable {
            if (!alive.expired())
                callback(std::forward<decltype(arguments)>(arguments)...);
        };
    }

private:
    std::shared_ptr<char> m_alive = std::make_shared<char>();
};

} // namespace quillox
