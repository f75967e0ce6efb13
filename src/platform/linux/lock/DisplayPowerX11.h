#pragma once

#include "support/Lifetime.h"

#include <gdk/gdk.h>
#include <memory>

namespace quillox {

class RestoreNote;

/// Whether an X server lets its screen saver be suspended. `display` must be an X server's.
bool canSuspendScreenSaver(GdkDisplay* display);

/// Whether an X server can save power (DPMS), switched on or not. `display` must be an X server's.
bool hasPowerSaving(GdkDisplay* display);

/// An X server's own screen saver and its power saving (DPMS), each where the server has it. The
/// server ends the suspension of its screen saver when the process dies, because its connection
/// closes. Power saving would stay off, so it goes off when the note is on the disk, and comes on
/// again at the next start. Main thread only.
class DisplayPowerX11 {
public:
    /// None when `display` is not an X server's.
    static std::unique_ptr<DisplayPowerX11> make(GdkDisplay* display, RestoreNote&);
    ~DisplayPowerX11();

    /// Whether the server has any of the two.
    bool keepOn();
    /// Harmless when not kept on.
    void release();

    /// Puts back what the loaded note says that a killed process left.
    void restoreAfterCrash();

private:
    DisplayPowerX11(GdkDisplay*, RestoreNote&);

    bool isPowerSavingOn() const;

    GdkDisplay* m_display;
    RestoreNote& m_note;
    bool m_isKeptOn = false;
    Lifetime m_lifetime;
};

} // namespace quillox
