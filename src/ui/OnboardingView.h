#pragma once

#include "lockdown/LaunchArmer.h"
#include "ports/AccentTextField.h"
#include "support/Handle.h"
#include "support/Published.h"
#include "ui/Caption.h"

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace quillox {

class AccessibilityTrust;
class AppState;
class Workspace;

/// The first-run guide: four steps from what the product does to the first website. Main thread
/// only.
class OnboardingView {
public:
    struct Machine {
        LaunchArmer::Machine gesture;
        const AccessibilityTrust& accessibility;
        Workspace& workspace;
    };

    OnboardingView(AppState&, Machine);

    enum Step { welcome, accessibility, sealGesture, firstKiosk };
    static constexpr int lastStep = firstKiosk;
    static constexpr std::chrono::seconds pollInterval { 1 };

    static constexpr double width = 600; ///< Points.
    static constexpr double height = 560; ///< Points.

    /// The texts, step by step.
    static constexpr std::string_view title = "QUILLOX";
    static constexpr std::string_view purpose
        = "Seal any website into a locked, fullscreen kiosk. Visitors can interact, but can't quit "
          "the app or leave the site.";
    static constexpr std::string_view invitation
        = "A quick setup and you'll be ready to seal your first site.";
    static constexpr std::string_view guideLink = "MAC SETUP GUIDE ↗";
    static constexpr std::string_view guideHelp = "Open the macOS setup guide in your browser";

    static constexpr Caption accessibilityCaption { "ACCESSIBILITY ACCESS",
        "Quillox needs Accessibility permission to fully lock the keyboard. It blocks Spotlight, "
        "Cmd-Tab and other system shortcuts so visitors can't escape the kiosk." };
    static constexpr std::string_view openSettingsTitle = "OPEN SYSTEM SETTINGS";
    static constexpr std::string_view relaunchNote
        = "After enabling it in System Settings, this updates automatically. If it doesn't, "
          "relaunch the app.";
    static constexpr std::string_view relaunchTitle = "RELAUNCH APP";

    static constexpr std::string_view gestureHeading = "THE SEAL GESTURE";
    /// The key caps stand between the two.
    static constexpr std::string_view gestureBeforeKeys = "Hold ";
    static constexpr std::string_view gestureAfterKeys
        = "to seal a site into the kiosk. Hold it again to break the seal and exit. It's the only "
          "way out, so a visitor can't stumble on it.";

    static constexpr Caption firstKioskCaption { "YOUR FIRST KIOSK",
        "Enter the website you want to seal. You can change this and every other setting "
        "afterwards." };

    static constexpr std::string_view backTitle = "BACK";
    static constexpr std::string_view setUpLaterTitle = "SET UP LATER";

    /// The guide begins anew each time it is shown. While it is there, the session's permission is
    /// looked at every second, and on the gesture's step the gesture is watched for.
    void appear();
    void disappear();

    int step() const { return m_step.get(); }
    /// The row of dots, for those who cannot see it: for example "Step 2 of 4".
    std::string progressName() const
    {
        return "Step " + std::to_string(step() + 1) + " of " + std::to_string(lastStep + 1);
    }
    /// Whether the session lets the keyboard be locked.
    bool isTrusted() const { return m_trusted.get(); }
    /// Whether the gesture was done once.
    bool hasPracticed() const { return m_practiced.get(); }

    std::string_view badge() const { return isTrusted() ? "GRANTED" : "NOT GRANTED YET"; }

    /// What the practice bar says; before the gesture was done, the key caps stand after it.
    SealBar practiceBar() const;
    bool practiceShowsKeyCaps() const { return !hasPracticed(); }

    bool showsBack() const { return step() > 0; }
    bool showsSetUpLater() const { return step() == accessibility && !isTrusted(); }
    std::string_view primaryTitle() const
    {
        return step() == lastStep ? "FINISH SETUP" : "CONTINUE";
    }
    bool isPrimaryEnabled() const { return !showsSetUpLater() && !blockedOnSource(); }
    /// On the last step, while there is nothing to seal.
    bool blockedOnSource() const;

    void goBack();
    void setUpLater();
    /// The primary button: goes on, and from the last step to the operator screen. Nothing happens
    /// while it is disabled.
    void goOn();

    void openSystemSettings();
    void openSetupGuide();
    /// Starts the application anew, for a session that does not notice its own permission.
    void relaunch();

    /// Edits the website's address; nothing is stored before the guide is finished.
    AccentTextField urlField();

    /// Calls back after anything that is shown has changed; sixty times a second during a hold.
    [[nodiscard]] std::vector<Handle> observe(const std::function<void()>& onChange);

private:
    void show(int step);
    void updateArmer();

    AppState& m_app;
    RunLoop& m_runLoop;
    const AccessibilityTrust& m_accessibility;
    Workspace& m_workspace;
    Published<int> m_step { welcome };
    Published<bool> m_trusted;
    Published<bool> m_practiced { false };
    LaunchArmer m_practiceArmer;
    bool m_isThere = false;
    Handle m_poll;
};

} // namespace quillox
