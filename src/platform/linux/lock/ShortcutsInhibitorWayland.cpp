#include "platform/linux/lock/ShortcutsInhibitorWayland.h"

#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/WindowPlacementWayland.h"
#include "ports/RunLoop.h"

#include <algorithm>
#include <vector>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// How long to leave a compositor alone that withdrew its confirmation.
    constexpr auto retryPause = 500ms;

    bool isInhibited(GdkToplevel* toplevel)
    {
        gboolean inhibited = FALSE;
        g_object_get(toplevel, "shortcuts-inhibited", &inhibited, nullptr);
        return inhibited != FALSE;
    }

    std::vector<GdkToplevel*> shownToplevels(const ApplicationGtk& application)
    {
        std::vector<GdkToplevel*> toplevels;
        for (auto* window : application.sealedWindows()) {
            if (window->get_mapped())
                toplevels.push_back(
                    GDK_TOPLEVEL(gtk_native_get_surface(GTK_NATIVE(window->gobj()))));
        }
        return toplevels;
    }

} // namespace

ShortcutsInhibitorWayland::ShortcutsInhibitorWayland(ApplicationGtk& application, RunLoop& runLoop)
    : m_application(application)
    , m_runLoop(runLoop)
{
    m_application.onSealedWindowShown = [this] {
        if (m_isEngaged)
            inhibitAll();
    };
}

ShortcutsInhibitorWayland::~ShortcutsInhibitorWayland()
{
    m_application.onSealedWindowShown = nullptr;
    release();
}

bool ShortcutsInhibitorWayland::engage()
{
    m_isEngaged = true;
    inhibitAll();
    gdk_display_sync(gdk_display_get_default());
    m_isHeld = isConfirmed();
    return m_isHeld;
}

void ShortcutsInhibitorWayland::release()
{
    m_isEngaged = false;
    m_isHeld = false;
    m_retry.reset();
    for (const auto& [toplevel, handler] : m_watched) {
        g_signal_handler_disconnect(toplevel, handler);
        gdk_toplevel_restore_system_shortcuts(toplevel);
        g_object_unref(toplevel);
    }
    m_watched.clear();
}

void ShortcutsInhibitorWayland::inhibitAll()
{
    for (auto* toplevel : shownToplevels(m_application)) {
        if (!m_watched.contains(toplevel)) {
            m_watched.emplace(GDK_TOPLEVEL(g_object_ref(toplevel)),
                g_signal_connect_swapped(toplevel, "notify::shortcuts-inhibited",
                    G_CALLBACK(+[](gpointer self) {
                        static_cast<ShortcutsInhibitorWayland*>(self)->handleChange();
                    }),
                    this));
        }
        gdk_toplevel_inhibit_system_shortcuts(toplevel, nullptr);
    }
}

void ShortcutsInhibitorWayland::handleChange()
{
    const bool isHeld = isConfirmed();
    if (!isHeld)
        m_retry = m_runLoop.after(retryPause, [this] { askAgain(); });
    if (isHeld == m_isHeld)
        return;
    m_isHeld = isHeld;
    if (const auto changed = onChange)
        changed();
}

void ShortcutsInhibitorWayland::askAgain()
{
    for (auto* toplevel : shownToplevels(m_application)) {
        if (!isInhibited(toplevel)) {
            gdk_toplevel_restore_system_shortcuts(toplevel);
            gdk_toplevel_inhibit_system_shortcuts(toplevel, nullptr);
        }
    }
    handleChange();
}

bool ShortcutsInhibitorWayland::isConfirmed() const
{
    if (isSingleWindowCompositor())
        return true;
    return hasShortcutsInhibitor()
        && std::ranges::all_of(shownToplevels(m_application), isInhibited);
}

} // namespace quillox
