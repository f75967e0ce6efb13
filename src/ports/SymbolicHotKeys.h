#pragma once

#include <cstdint>

namespace quillox {

/// Shortcuts that the system acts on before any event tap sees their keys, by number. Main thread
/// only.
class SymbolicHotKeys {
public:
    virtual ~SymbolicHotKeys() = default;

    /// Whether the system lets an application switch them at all. Does not change.
    virtual bool isAvailable() const = 0;

    /// 0 on success. A number that means nothing here is not a failure.
    virtual std::int32_t setEnabled(std::int32_t number, bool isEnabled) = 0;
};

} // namespace quillox
