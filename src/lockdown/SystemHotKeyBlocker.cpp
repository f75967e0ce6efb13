#include "lockdown/SystemHotKeyBlocker.h"

#include "ports/SymbolicHotKeys.h"
#include "ports/SystemLog.h"

#include <utility>

namespace quillox {

void SystemHotKeyBlocker::setEnabled(bool isEnabled)
{
    const bool isAvailable = m_hotKeys.isAvailable();
    if (!std::exchange(m_wasLookedUp, true) && !isAvailable)
        m_log.write("Quillox: CGSSetSymbolicHotKeyEnabled unavailable — hotkeys not blocked.");
    if (!isAvailable)
        return;
    // What the system answers changes nothing: the run goes on either way.
    for (const auto number : captureHotKeyIDs)
        static_cast<void>(m_hotKeys.setEnabled(number, isEnabled));
    for (const auto number : escapeHotKeyIDs)
        static_cast<void>(m_hotKeys.setEnabled(number, isEnabled));
}

} // namespace quillox
