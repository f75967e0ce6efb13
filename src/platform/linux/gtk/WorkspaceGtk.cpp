#include "platform/linux/gtk/WorkspaceGtk.h"

#include "platform/linux/system/GlibOwner.h"

#include <fmt/format.h>
#include <gio/gio.h>

namespace quillox {

namespace {

    constexpr auto permissionAddress
        = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

    constexpr auto permissionHelp
        = "This session does not let Quillox lock the keyboard, so that visitors could leave the "
          "page with the desktop's shortcuts.\n\n"
          "It can be locked in a session on X11, under a Wayland compositor that lets windows "
          "inhibit its shortcuts, and in a session that runs Quillox alone, for example "
          "“cage -- quillox”. Choose such a session at log-in.";

} // namespace

void WorkspaceGtk::open(const std::string& url)
{
    if (url == permissionAddress) {
        showPermissionHelp();
        return;
    }
    g_app_info_launch_default_for_uri_async(
        url.c_str(), nullptr, nullptr,
        [](GObject*, GAsyncResult* result, gpointer log) {
            GError* error = nullptr;
            const bool isOpened = g_app_info_launch_default_for_uri_finish(result, &error);
            const GErrorOwner held(error);
            if (!isOpened)
                static_cast<SystemLog*>(log)->write(
                    fmt::format("Quillox: could not open an address: {}.", error->message));
        },
        &m_log);
}

void WorkspaceGtk::showPermissionHelp()
{
    m_dialogs.present({ .style = Alert::Style::Informational,
                          .message = "Locking the keyboard",
                          .informativeText = permissionHelp,
                          .buttons = { "Close" } },
        [](std::size_t) {});
}

void WorkspaceGtk::relaunch()
{
    m_wantsRelaunch = true;
    m_application.terminate();
}

} // namespace quillox
