#pragma once

#include "platform/linux/engine/EngineModule.h"
#include "platform/linux/gtk/AccessibilityTrustSession.h"
#include "platform/linux/gtk/ApplicationGtk.h"
#include "platform/linux/gtk/DialogsGtk.h"
#include "platform/linux/gtk/EventMonitorsGtk.h"
#include "platform/linux/gtk/KioskViewsGtk.h"
#include "platform/linux/gtk/PopupKeeper.h"
#include "platform/linux/gtk/ScreensGdk.h"
#include "platform/linux/gtk/SealViewsGtk.h"
#include "platform/linux/gtk/UpdateProgressPanelsGtk.h"
#include "platform/linux/gtk/WindowGtk.h"
#include "platform/linux/gtk/WindowPlacement.h"
#include "platform/linux/gtk/WorkspaceGtk.h"
#include "platform/linux/lock/EventTapsLinux.h"
#include "platform/linux/lock/PowerAssertionsLinux.h"
#include "platform/linux/lock/RestoreNote.h"
#include "platform/linux/lock/SymbolicHotKeysLinux.h"
#include "platform/linux/service/AgentServicesLinux.h"
#include "platform/linux/service/UpdatersPackaged.h"
#include "platform/linux/system/CalendarPosix.h"
#include "platform/linux/system/Environment.h"
#include "platform/linux/system/FileSystemPosix.h"
#include "platform/linux/system/FileTypesGio.h"
#include "platform/linux/system/PathMonitorsLinux.h"
#include "platform/linux/system/RunLoopGlib.h"
#include "platform/linux/system/SiteFilesLinux.h"
#include "platform/linux/system/UsageFilePosix.h"
#include "platform/linux/update/UpdatesLinux.h"

#include <memory>

namespace quillox {

/// Every port of the machine that needs a display, as Linux has it. Make it when the toolkit has
/// started.
struct LinuxPlatform {
    /// `executable` is this process's, as it was at its start.
    LinuxPlatform(const Glib::RefPtr<Gtk::Application>& gtk, RunLoop& runLoop, SystemLog& log,
        const std::string& executable)
        : screens(runLoop)
        , placement(makeWindowPlacement(screens, runLoop))
        , application(gtk, *placement, log)
        , eventTaps(eventMonitors, makeKeyboardLayer(application, runLoop), runLoop, log)
        , restoreNote(restoreNotePathFromEnvironment(), runLoop, log)
        , symbolicHotKeys(restoreNote, runLoop, log)
        , powerAssertions(
              restoreNote, *gtk, [this] { return application.keyWindow(); }, log)
        , sealViews(runLoop)
        , windows(*placement, application, eventMonitors)
        , webEngine(runLoop, log, pageMemoryLimit())
        , workspace(
              application, *placement,
              [this](Gtk::Window* parent) { return webEngine.makeHelpWindow(parent); }, log)
        , updates(UpdatesLinux::find(
              executable, { runLoop, dialogs, updateProgressPanels, workspace, log }))
        , agentServices(runLoop, log)
        , packagedUpdaters(dialogs)
        , usageFile(usagePathFromEnvironment(), log)
    {
    }

    /// Puts back what a copy of the program that was killed could not. Call it once it is sure that
    /// no other copy runs.
    void restoreAfterCrash()
    {
        restoreNote.load();
        symbolicHotKeys.restoreAfterCrash();
        powerAssertions.restoreAfterCrash();
    }

    /// Those of the package manager, unless this copy of the application maintains itself.
    Updaters& updaters()
    {
        return updates ? updates->updaters() : static_cast<Updaters&>(packagedUpdaters);
    }

    ScreensGdk screens;
    std::unique_ptr<WindowPlacement> placement;
    ApplicationGtk application;
    EventMonitorsGtk eventMonitors;
    PopupKeeper popupKeeper;
    EventTapsLinux eventTaps;
    RestoreNote restoreNote;
    SymbolicHotKeysLinux symbolicHotKeys;
    PowerAssertionsLinux powerAssertions;
    SealViewsGtk sealViews;
    KioskViewsGtk kioskViews;
    WindowsGtk windows;
    EngineModule webEngine;
    PathMonitorsLinux pathMonitors;
    AccessibilityTrustSession accessibility;
    DialogsGtk dialogs;
    WorkspaceGtk workspace;
    UpdateProgressPanelsGtk updateProgressPanels;
    std::unique_ptr<UpdatesLinux> updates; ///< None where others maintain the application.
    AgentServicesLinux agentServices;
    UpdatersPackaged packagedUpdaters;
    FileSystemPosix fileSystem;
    SiteFilesLinux siteFiles;
    FileTypesGio fileTypes;
    CalendarPosix calendar;
    UsageFilePosix usageFile;
};

} // namespace quillox
