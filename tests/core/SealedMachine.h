#pragma once

#include "fakes/FakeApplication.h"
#include "fakes/FakeDefaultsStore.h"
#include "fakes/FakeEventMonitors.h"
#include "fakes/FakeFileSystem.h"
#include "fakes/FakeKeyboard.h"
#include "fakes/FakeLockdown.h"
#include "fakes/FakeRunLoop.h"
#include "fakes/FakeScreens.h"
#include "fakes/FakeSiteFiles.h"
#include "fakes/FakeSurroundings.h"
#include "fakes/FakeSystemLog.h"
#include "fakes/FakeUsage.h"
#include "fakes/FakeWindows.h"
#include "kiosk/KioskController.h"
#include "usage/UsageTracker.h"

namespace quillox {

/// A machine of fakes with one screen, and a controller on it.
struct SealedMachine {
    SealedMachine() { screens.plugIn({ 7, "Studio", { 0, 0, 1512, 982 }, 0 }); }

    std::unique_ptr<KioskController> makeController()
    {
        return std::make_unique<KioskController>(
            KioskController::Machine { screens, windows, windows, eventMonitors, application,
                fileSystem, siteFiles, fileTypes, runLoop, keyboard, keyboard, hotKeys, power,
                sealViews, kioskViews, pathMonitors, usageTracker, log });
    }

    FakeWindows::FakeWindow& kioskWindow() { return *windows.windows.front(); }
    FakeWindows::FakeWebView& page() { return *windows.webViews.front(); }

    Journal journal;
    FakeScreens screens;
    FakeWindows windows { journal };
    FakeEventMonitors eventMonitors;
    FakeApplication application { journal };
    FakeFileSystem fileSystem;
    FakeSiteFiles siteFiles;
    FakeFileTypes fileTypes;
    FakeRunLoop runLoop;
    FakeKeyboard keyboard { journal };
    FakeSymbolicHotKeys hotKeys { journal };
    FakePowerAssertions power { journal };
    FakeSealViews sealViews { journal };
    FakeKioskViews kioskViews { journal };
    FakePathMonitors pathMonitors { journal };
    FakeCalendar calendar;
    FakeUsageFile usageFile;
    UsageTracker usageTracker { runLoop, usageFile, calendar };
    FakeSystemLog log;
};

inline KioskSettings siteSettings()
{
    KioskSettings settings;
    settings.url = "https://museum.example/";
    return settings;
}

inline Event keyDown(KeyCode key, ModifierFlags flags = ModifierFlags::None)
{
    return { .type = EventType::KeyDown, .keyCode = key, .flags = flags };
}

} // namespace quillox
