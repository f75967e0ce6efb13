#pragma once

#include <gdk/x11/gdkx.h>
#include <optional>

namespace quillox {

/// A window that shows nothing and can have the keyboard; it goes with this. Main thread only.
class InvisibleWindowX11 {
public:
    explicit InvisibleWindowX11(::Display*);
    InvisibleWindowX11(const InvisibleWindowX11&) = delete;
    InvisibleWindowX11& operator=(const InvisibleWindowX11&) = delete;
    ~InvisibleWindowX11();

    ::Window identifier() const { return m_window; }

private:
    ::Display* m_display;
    ::Window m_window;
};

enum class KeyboardGrabAnswer {
    Given,
    HeldByAnother, ///< It may let go later.
    Refused, ///< For another reason, such as a window that cannot be seen.
};

/// Asks the X server for the master keyboard in the name of `window`, on the toolkit's own
/// connection, and waits for the answer. What this process holds already moves to `window`. Main
/// thread only.
KeyboardGrabAnswer attemptKeyboardGrab(GdkDisplay* display, ::Window window);

/// The number of the master keyboard; none where the server has no keyboard.
std::optional<int> masterKeyboard(GdkDisplay* display);

/// Lets the master keyboard go; harmless when it is not held.
void endKeyboardGrab(GdkDisplay* display);

} // namespace quillox
