#pragma once

#include "platform/linux/gtk/AccessibilityTrustSession.h"
#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/DialogsGtk.h"
#include "platform/linux/gtk/EventMonitorsGtk.h"
#include "platform/linux/gtk/ScreensGdk.h"
#include "platform/linux/gtk/WindowGtk.h"
#include "platform/linux/gtk/WindowPlacement.h"
#include "platform/linux/gtk/WorkspaceGtk.h"
#include "platform/linux/system/FileSystemPosix.h"
#include "platform/linux/system/FileTypesGio.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/system/SiteFilesLinux.h"
#include "platform/linux/webkit/WebEngine.h"

#include <memory>

namespace quillox {

/// Every port of the machine that needs a display, as Linux has it. Make it when the toolkit has
/// started.
struct LinuxPlatform {
    LinuxPlatform(Glib::RefPtr<Gtk::Application> gtk, RunLoop& runLoop, SystemLog& log)
        : screens(runLoop)
        , placement(makeWindowPlacement(screens, runLoop))
        , application(std::move(gtk), *placement, log)
        , windows(*placement, application, eventMonitors)
        , webEngine(runLoop)
        , workspace(application, dialogs, log)
    {
    }

    ScreensGdk screens;
    std::unique_ptr<WindowPlacement> placement;
    ApplicationGtk application;
    EventMonitorsGtk eventMonitors;
    WindowsGtk windows;
    WebEngine webEngine;
    AccessibilityTrustSession accessibility;
    DialogsGtk dialogs;
    WorkspaceGtk workspace;
    FileSystemPosix fileSystem;
    SiteFilesLinux siteFiles;
    FileTypesGio fileTypes;
};

} // namespace quillox
