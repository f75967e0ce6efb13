#pragma once

#include "platform/linux/lock/DesktopShortcuts.h"
#include "platform/linux/lock/GlobalShortcutsKde.h"
#include "platform/linux/lock/ServerKeysX11.h"
#include "ports/SymbolicHotKeys.h"
#include "support/Lifetime.h"

#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace quillox {

class RestoreNote;
class RunLoop;
class SystemLog;

/// XDG_CURRENT_DESKTOP of this process's environment.
std::string currentDesktops();

/// What no grab and no shortcuts inhibitor stops. Each of the seven numbers stands for settings of
/// GNOME-like desktops; what has but one switch, the X server's own key actions and KDE's global
/// shortcuts, is off while any of the seven is. It takes effect when the main loop is free and the
/// disk has the note of what to put back, a few milliseconds later; putting back waits only for the
/// main loop. Whatever is off when this goes is put back.
class SymbolicHotKeysLinux final : public SymbolicHotKeys {
public:
    SymbolicHotKeysLinux(
        RestoreNote&, RunLoop&, SystemLog&, std::string_view desktops = currentDesktops());
    ~SymbolicHotKeysLinux() override;

    /// Puts back what the loaded note says that a killed process left. Call it before `setEnabled`.
    void restoreAfterCrash();

    bool isAvailable() const override;
    std::int32_t setEnabled(std::int32_t number, bool isEnabled) override;

private:
    void requestSettling();
    void settle();
    void putBack();
    void noteWhatIsThere();
    void switchOff();

    RestoreNote& m_note;
    RunLoop& m_runLoop;
    std::unique_ptr<ServerKeysX11> m_serverKeys; ///< None without an X server.
    DesktopShortcuts m_desktop;
    GlobalShortcutsKde m_kde;
    const bool m_isKde;

    std::set<std::int32_t> m_off;
    std::set<std::int32_t> m_noted; ///< Those whose settings are in the note.
    bool m_isSettlingRequested = false;
    Lifetime m_lifetime;
};

} // namespace quillox
