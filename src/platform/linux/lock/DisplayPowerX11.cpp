#include "platform/linux/lock/DisplayPowerX11.h"

#include "platform/linux/lock/ErrorTrapX11.h"
#include "platform/linux/lock/RestoreNote.h"
#include "platform/linux/lock/ServerMark.h"

#include <utility>

// Last, since Xlib claims common words.
#include <X11/extensions/dpms.h>
#include <X11/extensions/scrnsaver.h>

namespace quillox {

bool canSuspendScreenSaver(GdkDisplay* display)
{
    auto* server = gdk_x11_display_get_xdisplay(display);
    int major = 0;
    int minor = 0;
    return XScreenSaverQueryExtension(server, &major, &minor)
        && XScreenSaverQueryVersion(server, &major, &minor)
        && (major > 1 || (major == 1 && minor >= 1));
}

bool hasPowerSaving(GdkDisplay* display)
{
    auto* server = gdk_x11_display_get_xdisplay(display);
    int ignored = 0;
    return DPMSQueryExtension(server, &ignored, &ignored) && DPMSCapable(server);
}

std::unique_ptr<DisplayPowerX11> DisplayPowerX11::make(GdkDisplay* display, RestoreNote& note)
{
    if (!display || !GDK_IS_X11_DISPLAY(display))
        return nullptr;
    return std::unique_ptr<DisplayPowerX11>(new DisplayPowerX11(display, note));
}

DisplayPowerX11::DisplayPowerX11(GdkDisplay* display, RestoreNote& note)
    : m_display(display)
    , m_note(note)
{
}

DisplayPowerX11::~DisplayPowerX11()
{
    release();
}

bool DisplayPowerX11::keepOn()
{
    if (std::exchange(m_isKeptOn, true))
        return true;
    const ErrorTrapX11 trap(m_display);
    auto* server = gdk_x11_display_get_xdisplay(m_display);
    if (canSuspendScreenSaver(m_display))
        XScreenSaverSuspend(server, True);
    if (isPowerSavingOn()) {
        m_note.contents().server = serverMark(m_display);
        m_note.contents().hasDisabledDisplayPowerSaving = true;
        m_note.save(m_lifetime.guard([this, server] {
            if (!m_note.contents().hasDisabledDisplayPowerSaving)
                return;
            DPMSDisable(server);
            XFlush(server);
        }));
    }
    XFlush(server);
    m_isKeptOn = canSuspendScreenSaver(m_display) || hasPowerSaving(m_display);
    return m_isKeptOn;
}

void DisplayPowerX11::release()
{
    if (!std::exchange(m_isKeptOn, false))
        return;
    const ErrorTrapX11 trap(m_display);
    auto* server = gdk_x11_display_get_xdisplay(m_display);
    if (canSuspendScreenSaver(m_display))
        XScreenSaverSuspend(server, False);
    if (std::exchange(m_note.contents().hasDisabledDisplayPowerSaving, false)) {
        DPMSEnable(server);
        m_note.save();
    }
    XSync(server, False); // The process may be about to end.
}

void DisplayPowerX11::restoreAfterCrash()
{
    if (!std::exchange(m_note.contents().hasDisabledDisplayPowerSaving, false))
        return;
    const ErrorTrapX11 trap(m_display);
    if (hasPowerSaving(m_display) && m_note.contents().server == serverMark(m_display))
        DPMSEnable(gdk_x11_display_get_xdisplay(m_display));
    m_note.save();
}

bool DisplayPowerX11::isPowerSavingOn() const
{
    CARD16 level = 0;
    BOOL isOn = False;
    return hasPowerSaving(m_display)
        && DPMSInfo(gdk_x11_display_get_xdisplay(m_display), &level, &isOn) && isOn;
}

} // namespace quillox
