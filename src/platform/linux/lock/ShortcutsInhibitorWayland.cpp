#include "platform/linux/lock/ShortcutsInhibitorWayland.h"

#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/WindowPlacementWayland.h"
#include "ports/RunLoop.h"

#include <algorithm>
#include <vector>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    /// How long the compositor has to confirm, and the keyboard to come to one of our windows; also
    /// the pause before a compositor that did not is asked again.
    constexpr auto patience = 1s;

    bool isInhibited(GdkToplevel* toplevel)
    {
        gboolean inhibited = FALSE;
        g_object_get(toplevel, "shortcuts-inhibited", &inhibited, nullptr);
        return inhibited != FALSE;
    }

    bool isFocused(GdkToplevel* toplevel)
    {
        return (gdk_toplevel_get_state(toplevel) & GDK_TOPLEVEL_STATE_FOCUSED) != 0;
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
        if (!m_isEngaged)
            return;
        inhibitAll();
        handleChange();
    };
}

ShortcutsInhibitorWayland::~ShortcutsInhibitorWayland()
{
    m_application.onSealedWindowShown = nullptr;
    release();
}

bool ShortcutsInhibitorWayland::engage()
{
    const bool isFirst = !std::exchange(m_isEngaged, true);
    inhibitAll();
    gdk_display_sync(gdk_display_get_default());
    // To windows that were just shown the keyboard is still on its way.
    m_isHeld = isConfirmed() && (isFirst || hasKeyboard());
    handleChange();
    return m_isHeld;
}

void ShortcutsInhibitorWayland::release()
{
    m_isEngaged = false;
    m_isHeld = false;
    m_check.reset();
    for (const auto& toplevel : m_watched) {
        g_signal_handlers_disconnect_by_data(toplevel.get(), this);
        gdk_toplevel_restore_system_shortcuts(toplevel.get());
    }
    m_watched.clear();
}

void ShortcutsInhibitorWayland::inhibitAll()
{
    for (auto* toplevel : shownToplevels(m_application)) {
        if (std::ranges::find(m_watched, toplevel, &GObjectOwner<GdkToplevel>::get)
            == m_watched.end())
            watch(toplevel);
        gdk_toplevel_inhibit_system_shortcuts(toplevel, nullptr);
    }
}

void ShortcutsInhibitorWayland::watch(GdkToplevel* toplevel)
{
    m_watched.emplace_back(GDK_TOPLEVEL(g_object_ref(toplevel)));
    const auto confirmed = +[](gpointer self) {
        static_cast<ShortcutsInhibitorWayland*>(self)->handleConfirmation();
    };
    const auto changed
        = +[](gpointer self) { static_cast<ShortcutsInhibitorWayland*>(self)->handleChange(); };
    g_signal_connect_swapped(toplevel, "notify::shortcuts-inhibited", G_CALLBACK(confirmed), this);
    g_signal_connect_swapped(toplevel, "notify::state", G_CALLBACK(changed), this);
}

void ShortcutsInhibitorWayland::handleConfirmation()
{
    // One that was just asked is left alone for a while.
    if (isConfirmed() || m_runLoop.monotonicNow() < m_nextQuestion)
        handleChange();
    else
        check();
}

void ShortcutsInhibitorWayland::handleChange()
{
    m_check = m_runLoop.after(patience, [this] { check(); });
}

void ShortcutsInhibitorWayland::check()
{
    const bool isHeld = isConfirmed() && hasKeyboard();
    m_nextQuestion = m_runLoop.monotonicNow() + patience;
    for (auto* toplevel : shownToplevels(m_application)) {
        if (hasShortcutsInhibitor() && !isInhibited(toplevel)) {
            gdk_toplevel_restore_system_shortcuts(toplevel);
            gdk_toplevel_inhibit_system_shortcuts(toplevel, nullptr);
        }
    }
    if (!isHeld)
        handleChange();
    if (isHeld == m_isHeld)
        return;
    m_isHeld = isHeld;
    if (const auto changed = onChange)
        changed();
}

bool ShortcutsInhibitorWayland::hasKeyboard() const
{
    return std::ranges::any_of(shownToplevels(m_application), isFocused);
}

bool ShortcutsInhibitorWayland::isConfirmed() const
{
    if (isSingleWindowCompositor())
        return true;
    return hasShortcutsInhibitor()
        && std::ranges::all_of(shownToplevels(m_application), isInhibited);
}

} // namespace quillox
