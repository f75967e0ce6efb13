#pragma once

#include <cstdint>
#include <string_view>

namespace quillox {

/// Wishes about the machine's power. Each lasts until it is released or the process ends, however
/// it ends. Main thread only.
class PowerAssertions {
public:
    using Identifier = std::uint32_t;

    struct Creation {
        std::int32_t result = 0; ///< 0 on success, else the system's code.
        Identifier identifier = 0; ///< Not 0 on success.
    };

    virtual ~PowerAssertions() = default;

    /// `type` says what is wished for, `name` why, for people who list the wishes.
    virtual Creation create(std::string_view type, std::uint32_t level, std::string_view name) = 0;
    virtual void release(Identifier) = 0;
};

} // namespace quillox
