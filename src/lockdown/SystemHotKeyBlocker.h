#pragma once

#include <array>
#include <cstdint>

namespace quillox {

class SymbolicHotKeys;
class SystemLog;

/// Switches off, for the time of a run, the shortcuts that no event tap can stop. Keeps nothing in
/// mind: `restore` enables them all. Main thread only.
class SystemHotKeyBlocker {
public:
    /// Pictures and recordings of the screen.
    static constexpr std::array<std::int32_t, 5> captureHotKeyIDs { 28, 29, 30, 31, 184 };
    /// The system's search.
    static constexpr std::array<std::int32_t, 2> escapeHotKeyIDs { 64, 65 };

    SystemHotKeyBlocker(SymbolicHotKeys& hotKeys, SystemLog& log)
        : m_hotKeys(hotKeys)
        , m_log(log)
    {
    }

    void disable() { setEnabled(false); }
    void restore() { setEnabled(true); }

private:
    void setEnabled(bool);

    SymbolicHotKeys& m_hotKeys;
    SystemLog& m_log;
    bool m_wasLookedUp = false;
};

} // namespace quillox
