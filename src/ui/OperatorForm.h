#pragma once

#include "config/KioskSettings.h"
#include "kiosk/Displays.h"
#include "ports/AccentTextField.h"
#include "support/Handle.h"
#include "support/Lifetime.h"
#include "support/Published.h"
#include "ui/Caption.h"

#include <array>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace quillox {

class AppState;
class FileSystem;
class UpdateController;
class Watchdog;

/// One switch of the operator screen.
struct SettingToggle {
    std::string_view name; ///< Of the setting, for whoever looks for its widget.
    Caption caption; ///< `help` may be empty.
    bool KioskSettings::*field;
    std::string_view symbol {}; ///< Empty for most.
};

/// Every setting on the operator screen: what stands over it, what it shows, when it can be
/// changed. Each change is stored at once. Main thread only.
class OperatorForm {
public:
    struct Machine {
        const FileSystem& fileSystem;
        Screens& screens;
        Watchdog& watchdog;
        UpdateController& updates;
    };

    /// `appVersion` may be empty.
    OperatorForm(AppState&, Machine, std::string appVersion);

    /// Takes a fresh look at the displays and at the login agent, and follows the displays from
    /// now on.
    void appear();
    void disappear();

    // The source.

    static constexpr std::string_view sourceHeading = "WEBSITE";
    static constexpr auto urlPlaceholder = "https://…";
    static constexpr std::string_view chooseSymbol = "folder.fill";
    static constexpr std::string_view chooseName = "Choose a folder or an HTML file";
    static constexpr std::string_view clearSymbol = "xmark";
    static constexpr std::string_view clearName = "Use a website address instead";
    static constexpr std::string_view localWarning = "NOT FOUND IN THIS FOLDER";

    /// Whether a folder stands in the place of the address.
    bool isLocal() const;
    /// The folder's name and its entry page.
    std::string localTitle() const;
    /// The entry page is not in the folder.
    bool localWarn() const;
    AccentTextField urlField();
    void chooseSource();
    void clearSource();

    // Switches.

    static constexpr std::string_view pathHelp = "Stay within this URL's section, e.g. /exhibits/…";
    static constexpr std::string_view pathMissingHelp = "Add a path to the URL above to use this";

    static constexpr std::array toggles {
        SettingToggle { "restrictToDomain",
            { "LOCK TO DOMAIN", "Visitors can't navigate off this site" },
            &KioskSettings::restrictToDomain },
        SettingToggle {
            "restrictToPath", { "LOCK TO PATH", pathHelp }, &KioskSettings::restrictToPath },
        SettingToggle { "scrollOnly",
            { "SCROLL ONLY", "Visitors can scroll but not click. Nav bar still works" },
            &KioskSettings::scrollOnly },
        SettingToggle {
            "showBack", { "BACK", "" }, &KioskSettings::showBack, "chevron.left.circle.fill" },
        SettingToggle { "showForward", { "FORWARD", "" }, &KioskSettings::showForward,
            "chevron.right.circle.fill" },
        SettingToggle { "showHome", { "HOME", "" }, &KioskSettings::showHome, "house.circle.fill" },
        SettingToggle { "showRefresh", { "RELOAD", "" }, &KioskSettings::showRefresh,
            "arrow.counterclockwise.circle.fill" },
        SettingToggle { "avoidNotch",
            { "NOTCH BAR", "Bar under the notch so it doesn't cover content" },
            &KioskSettings::avoidNotch },
        SettingToggle { "keepAlive",
            { "KEEP ALIVE", "Start app at login - auto restart in case of a crash" },
            &KioskSettings::keepAlive },
        SettingToggle { "autoStartKiosk",
            { "SEAL IT ON LAUNCH", "Enter kiosk mode automatically on app start / restart" },
            &KioskSettings::autoStartKiosk },
        SettingToggle { "requireExitPassword",
            { "EXIT PASSWORD", "Require a password to break the seal" },
            &KioskSettings::requireExitPassword },
        SettingToggle { "autoUpdate",
            { "AUTOMATIC UPDATES", "Install updates silently off-hours - never over a live kiosk" },
            &KioskSettings::autoUpdate },
    };

    bool isOn(const SettingToggle&) const;
    /// Locking to a path needs an address with one.
    bool canChange(const SettingToggle&) const;
    std::string_view help(const SettingToggle&) const;
    /// Nothing happens to one that cannot be changed.
    void setOn(const SettingToggle&, bool isOn);

    // Further domains.

    static constexpr Caption domainsCaption { "ALSO ALLOW THESE DOMAINS",
        "For checkout or login redirects, e.g. paypal.com. Each entry allows that domain and its "
        "subdomains." };
    static constexpr auto domainPlaceholder = "paypal.com";
    static constexpr std::string_view addSymbol = "plus";
    static constexpr std::string_view addName = "Add this domain";
    static constexpr std::string_view removeSymbol = "xmark";

    AccentTextField domainField();
    const std::vector<std::string>& domains() const;
    /// "Remove " and the domain, for whoever cannot see the row.
    static std::string removeName(const std::string& domain) { return "Remove " + domain; }
    /// Adds what was typed, as a plain host; what is none or is listed already is dropped.
    void addDomain();
    void removeDomain(std::size_t index);

    // The navigation bar.

    static constexpr Caption navBarCaption { "NAVIGATION BAR",
        "On-screen buttons shown in the kiosk" };
    static constexpr Caption positionCaption { "POSITION",
        "Where the Navigation Overlay sits on screen" };
    /// `allNavPositions` in rows of three are the screen's corners and edges.
    static constexpr std::size_t positionsInRow = 3;
    static std::string_view positionName(NavPosition);
    NavPosition navPosition() const;
    void setNavPosition(NavPosition);

    // The display.

    static constexpr Caption displayCaption { "DISPLAY", "Choose the screen that you want to use" };
    static constexpr std::string_view primaryDisplay = "Primary (automatic)";
    static constexpr Caption barColorCaption { "BAR COLOR",
        "Black, or match the website's background" };

    /// What can be chosen; the first one is the primary display, whose id is 0.
    std::vector<DisplayInfo> displayItems() const;
    std::uint32_t displayID() const;
    std::string displayLabel() const;
    void setDisplay(std::uint32_t displayID);

    static std::string_view barColorTitle(NotchBarColor);
    NotchBarColor notchBarColor() const;
    void setNotchBarColor(NotchBarColor);

    // Inactivity.

    static constexpr Caption idleResetCaption { "RESET TO HOME",
        "Return to home after inactivity" };
    static constexpr std::array<std::pair<std::string_view, std::int64_t>, 8> idlePresets {
        { { "Off", 0 }, { "10s", 10 }, { "30s", 30 }, { "1 min", 60 }, { "5 min", 300 },
            { "10 min", 600 }, { "30 min", 1800 }, { "1 hour", 3600 } }
    };
    std::string idlePresetLabel() const;
    std::int64_t idleResetSeconds() const;
    void setIdleReset(std::int64_t seconds);

    // The exit password.

    static constexpr std::string_view passwordHeading = "PASSWORD";
    static constexpr auto passwordPlaceholder = "SET A PASSWORD";

    /// Required, but empty.
    bool exitPasswordWarn() const;
    bool showsExitPassword() const { return m_showExitPassword.get(); }
    std::string_view eyeSymbol() const { return showsExitPassword() ? "eye.slash" : "eye"; }
    std::string_view eyeName() const
    {
        return showsExitPassword() ? "Hide the password" : "Show the password";
    }
    void toggleShowExitPassword();
    /// Whether it is secure is settled when it is made: make another after every toggle.
    AccentTextField passwordField();

    // Updates.

    static constexpr std::string_view checkHeading = "CHECK FOR UPDATES";
    static constexpr std::string_view checkTitle = "CHECK NOW";
    void checkForUpdates();
    /// "Version " and the application's own.
    std::string versionLine() const;

    /// Calls back after anything that is shown has changed.
    [[nodiscard]] std::vector<Handle> observe(const std::function<void()>& onChange);

private:
    const KioskSettings& settings() const;
    template <typename Change> void change(Change);
    template <typename Value> void set(Value KioskSettings::*field, const Value& value);
    AccentTextField field(std::string KioskSettings::*field);

    AppState& m_app;
    Machine m_machine;
    std::string m_appVersion;
    Published<std::vector<DisplayInfo>> m_displays;
    Published<bool> m_showExitPassword { false };
    Published<std::string> m_domainDraft;
    Handle m_screenChanges;
    Lifetime m_agentReading; ///< Ends with the next change by the operator.
};

} // namespace quillox
