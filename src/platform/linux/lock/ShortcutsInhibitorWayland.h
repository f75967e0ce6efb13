#pragma once

#include "platform/linux/lock/KeyboardLayer.h"
#include "support/Handle.h"

#include <gtkmm/window.h>
#include <map>

namespace quillox {

class ApplicationGtk;
class RunLoop;

/// Asks the compositor to keep its shortcuts off, for every window of a run: the one that has the
/// keyboard decides, and that may be a cover. Held while the compositor confirms it for all of
/// them, or has no shortcuts. It ends with the windows' connection, and so with the process.
class ShortcutsInhibitorWayland final : public KeyboardLayer {
public:
    ShortcutsInhibitorWayland(ApplicationGtk&, RunLoop&);
    ~ShortcutsInhibitorWayland() override;

    std::string_view name() const override { return "Wayland shortcuts inhibitor"; }

    /// Waits for one answer of the compositor.
    bool engage() override;
    void release() override;
    bool isHeld() const override { return m_isHeld; }
    bool isIndependentOfFocus() const override { return false; }

private:
    void inhibitAll();
    void handleChange();
    void askAgain();
    bool isConfirmed() const;

    ApplicationGtk& m_application;
    RunLoop& m_runLoop;
    std::map<GdkToplevel*, gulong> m_watched; ///< With the handler of its confirmation.
    Handle m_retry;
    bool m_isEngaged = false;
    bool m_isHeld = false;
};

} // namespace quillox
