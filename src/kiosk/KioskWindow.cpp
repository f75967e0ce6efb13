#include "kiosk/KioskWindow.h"

#include <utility>

namespace quillox {

namespace {

    WindowSpec kioskWindowSpec(const Screen& screen)
    {
        auto spec = coverWindowSpec(screen);
        spec.isShared = false;
        spec.canBecomeKey = KioskWindow::canBecomeKey();
        spec.canBecomeMain = KioskWindow::canBecomeMain();
        return spec;
    }

} // namespace

KioskWindow::KioskWindow(Windows& windows, const Screen& screen)
    : m_window(windows.makeWindow(kioskWindowSpec(screen)))
{
}

void KioskWindow::setContentView(std::unique_ptr<Container> content)
{
    m_window->setContentView(content.get());
    m_content = std::move(content);
}

WindowSpec coverWindowSpec(const Screen& screen)
{
    return { .displayNumber = screen.displayNumber, .frame = screen.frame };
}

} // namespace quillox
