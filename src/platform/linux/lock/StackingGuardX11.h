#pragma once

#include "ports/RunLoop.h"
#include "support/Handle.h"

#include <gdk/x11/gdkx.h>
#include <vector>

namespace quillox {

/// Keeps the sealed windows above all others, whatever other clients and the window manager do, and
/// the input focus in the one that may have it. Select lists and other popups of sealed windows
/// stay above those. What comes on top is covered again some 10 ms later, or when the main loop is
/// free; what raises itself faster than that is seen in between, but costs a bounded share of the
/// processor. Acts on events of the server; without a guarded window it asks for none. Main thread
/// only.
class StackingGuardX11 {
public:
    /// For the default display, which must be an X11 one.
    explicit StackingGuardX11(RunLoop&);
    ~StackingGuardX11();

    StackingGuardX11(const StackingGuardX11&) = delete;
    StackingGuardX11& operator=(const StackingGuardX11&) = delete;

    /// Guards a top-level window of this program, which need not be on the screen yet.
    void add(::Window);

    /// Gives the focus to a guarded window as soon as it can have it, and again whenever it is
    /// lost.
    void setKeyWindow(::Window);

    /// Ends the guard of that window. With the last one everything is as it was before the first.
    void remove(::Window);

    bool guards(::Window) const;

private:
    struct Stack;

    void start();
    void stop();
    void watchStacking();
    void handleEvent(const XEvent&);
    void scheduleCheck();
    void check();
    void checkStacking(const Stack&);
    /// The popups from the top to the bottom.
    void restack(const Stack&, const std::vector<::Window>& popups);
    void checkFocus(const Stack&);
    bool isOpenPopup(::Window) const;
    Stack stack() const;
    ::Window toplevelOf(::Window) const;

    RunLoop& m_runLoop;
    GdkDisplay* m_gdkDisplay;
    ::Display* m_display;
    ::Window m_root;
    int m_inputExtension = 0;

    std::vector<::Window> m_windows;
    ::Window m_keyWindow = None;

    gulong m_eventHandler = 0;
    long m_rootMask = 0; ///< What of the root window is asked for without the guard.
    bool m_hearsStacking = false;
    RunLoop::MonotonicTime m_nextCheck;
    Handle m_check;
    Handle m_safetyTimer;
};

} // namespace quillox
