#pragma once

#include "config/KioskSettings.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"

#include <functional>
#include <optional>
#include <string>

namespace quillox {

class AccessibilityTrust;
class Application;
class DefaultsStore;
class Dialogs;
class FileSystem;
class KioskController;
class RunLoop;
class Workspace;

/// The one state of the application: what the setup screens show and edit, the countdown that seals
/// by itself, and the operation that seals. Main thread only.
class AppState {
public:
    struct Machine {
        RunLoop& runLoop;
        DefaultsStore& defaults;
        const FileSystem& fileSystem;
        AccessibilityTrust& accessibility;
        Dialogs& dialogs;
        Workspace& workspace;
        Application& application;
    };

    /// `canCreateTap` tells whether the keyboard can be locked although the session did not say so;
    /// without one it cannot. Reads the stored settings.
    AppState(Machine, KioskController&, std::function<bool()> canCreateTap = {});

    /// Where the session's permission to lock the keyboard is given.
    static constexpr auto accessibilitySettings
        = "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility";

    static AppState& shared() { return *s_shared; }
    static void setShared(AppState* state) { s_shared = state; }

    /// Written to the store only by the operations below and by `saveSettings`.
    Published<KioskSettings> settings;
    /// From the moment a run is handed over until it reports its end.
    Published<bool> isKioskActive { false };
    Published<bool> hasOnboarded { false };
    Published<bool> showFinishingScreen { false };
    /// Whole seconds left; present only while a countdown runs.
    Published<std::optional<int>> autoStartCountdown;

    void saveSettings();
    bool hasSource() const;

    /// The first-run guide is done: its finishing interlude begins.
    void completeOnboarding();

    /// Lets the operator pick a local website. Returns at once; the settings follow when something
    /// was chosen.
    void chooseLocalSource();
    void clearLocalSource();

    /// Counts down from `seconds`, then seals; starts anew when a countdown runs. Nothing happens
    /// without a source.
    void beginAutoStart(int seconds);
    void cancelAutoStart();

    /// Seals now, or says why it cannot. Nothing happens without a source.
    void launchKiosk();

    /// Whether there is an engine. It may take the time that loading one takes.
    bool canShowPages() const;

private:
    void tickAutoStart();
    void useLocalSource(const std::string& path);
    bool canLockKeyboard() const;
    void askForAccessibility();
    void presentNoEngineAlert();
    void presentLockdownFailedAlert();
    void presentAccessibilityAlert(bool isWarning, std::string message, std::string text);

    inline static AppState* s_shared = nullptr;

    Machine m_machine;
    KioskController& m_controller;
    std::function<bool()> m_canCreateTap;
    Handle m_autoStartTimer;
    Handle m_finishingTimer;
    Lifetime m_lifetime;
};

} // namespace quillox
