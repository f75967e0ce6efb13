#pragma once

#include "platform/linux/lock/KeyboardLayer.h"
#include "platform/linux/system/GlibOwner.h"
#include "ports/RunLoop.h"
#include "support/Handle.h"

#include <gtkmm/window.h>
#include <vector>

namespace quillox {

class ApplicationGtk;

/// Asks the compositor to keep its shortcuts off, for every window of a run: the one that has the
/// keyboard decides, and that may be a cover. Held while the compositor confirms it for all of
/// them, or has no shortcuts, and one of them has the keyboard; a moment without, as when it moves
/// from one to the other, does not count. It ends with the windows' connection, and so with the
/// process.
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
    void watch(GdkToplevel*);
    void handleConfirmation();
    void handleChange();
    void check();
    bool hasKeyboard() const;
    bool isConfirmed() const;

    ApplicationGtk& m_application;
    RunLoop& m_runLoop;
    std::vector<GObjectOwner<GdkToplevel>> m_watched;
    Handle m_check;
    RunLoop::MonotonicTime m_nextQuestion;
    bool m_isEngaged = false;
    bool m_isHeld = false;
};

} // namespace quillox
