#pragma once

#include <gdk/x11/gdkx.h>

namespace quillox {

/// Passes over the X server's refusals while it lives: what a request names may go at any time.
class ErrorTrapX11 {
public:
    explicit ErrorTrapX11(GdkDisplay* display)
        : m_display(display)
    {
        gdk_x11_display_error_trap_push(display);
    }
    ErrorTrapX11(const ErrorTrapX11&) = delete;
    ErrorTrapX11& operator=(const ErrorTrapX11&) = delete;
    ~ErrorTrapX11() { gdk_x11_display_error_trap_pop_ignored(m_display); }

private:
    GdkDisplay* m_display;
};

} // namespace quillox
