#pragma once

#include "ports/Screens.h"
#include "ports/Window.h"

#include <memory>

namespace quillox {

/// The window that holds the sealed page. Being borderless it would refuse the keyboard; this one
/// takes it, as key window and as main window.
class KioskWindow {
public:
    KioskWindow(Windows& windows, const Screen& screen);

    static bool canBecomeKey() { return true; }
    static bool canBecomeMain() { return true; }

    Window& platformWindow() { return *m_window; }
    Container* contentView() const { return m_content.get(); }

    void setContentView(std::unique_ptr<Container>);
    void makeKeyAndOrderFront() { m_window->makeKeyAndOrderFront(); }
    void orderOut() { m_window->orderOut(); }

private:
    std::unique_ptr<Container> m_content;
    std::unique_ptr<Window> m_window;
};

/// A plain black window that hides everything on one screen and never takes the keyboard.
WindowSpec coverWindowSpec(const Screen&);

} // namespace quillox
