#pragma once

#include "config/KioskSettings.h"
#include "config/SiteRules.h"
#include "kiosk/Connectivity.h"
#include "kiosk/IdleWatch.h"
#include "kiosk/KioskViews.h"
#include "kiosk/KioskWebView.h"
#include "kiosk/KioskWindow.h"
#include "kiosk/PageGuard.h"
#include "lockdown/DisplaySleepBlocker.h"
#include "lockdown/SealViews.h"
#include "lockdown/SystemHotKeyBlocker.h"
#include "lockdown/SystemKeyBlocker.h"
#include "ports/Application.h"
#include "ports/EventMonitors.h"
#include "ports/Screens.h"
#include "support/Handle.h"
#include "support/Lifetime.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quillox {

class FileSystem;
class FileTypes;
class SiteFiles;
class SymbolicHotKeys;
class SystemLog;
class UsageTracker;

/// Drives one sealed run after another: the page full screen on its display, every other display
/// black, the ways out closed, and everything undone in a fixed order at the end. Main thread only.
class KioskController final : public NavigationDelegate,
                              public UIDelegate,
                              private Connectivity::Delegate,
                              private PageGuard::Delegate {
public:
    struct Machine {
        Screens& screens;
        Windows& windows;
        WebViews& webViews;
        EventMonitors& eventMonitors;
        Application& application;
        const FileSystem& fileSystem;
        const SiteFiles& siteFiles;
        const FileTypes& fileTypes;
        RunLoop& runLoop;
        EventTaps& eventTaps;
        const KeyState& keyState;
        SymbolicHotKeys& symbolicHotKeys;
        PowerAssertions& powerAssertions;
        SealViews& sealViews;
        KioskViews& kioskViews;
        PathMonitors& pathMonitors;
        UsageTracker& usageTracker;
        SystemLog& log;
    };

    explicit KioskController(Machine);
    ~KioskController() override;

    static KioskController& shared() { return *s_shared; }
    static void setShared(KioskController* controller) { s_shared = controller; }

    /// Whether there is a web engine; without one no run begins. It may take the time that loading
    /// one takes.
    bool canShowPages() const;

    /// Seals. False, and nothing changed, when a run is active already, the settings name no start
    /// address, or no page can be shown. `onExit` is called once, at the end of the run.
    bool start(const KioskSettings&, std::function<void()> onExit);

    /// What the exit gesture asks for: the end of the run, or first the password when one is
    /// required.
    void requestExit();

    /// Takes the password prompt away and gives the keyboard back to the page.
    void dismissSealPrompt();

    /// Ends the run; harmless without one.
    void stop();

    bool isActive() const { return m_isActive; }

    /// Called each time a run has brought something to the screen: the page, or the notice that it
    /// cannot be reached.
    void setOnScreenShown(std::function<void()> onScreenShown)
    {
        m_onScreenShown = std::move(onScreenShown);
    }

    /// Whether the present run may show the address; nothing is allowed without one.
    bool isAllowed(const Url&) const;

private:
    struct CoverWindow {
        std::uint32_t displayNumber;
        std::unique_ptr<Window> window;
    };

    std::optional<Screen> chooseScreen() const;
    WebViewConfiguration webViewConfiguration() const;
    void fixSiteRules(const Url& startURL);
    void buildWindow();
    void buildContent(Container&);
    void placeNotchBar(Container&);
    void placeNavBar(Container&);
    void installNavBar(Container&);
    double topInset() const;
    Rect navBarFrame() const;
    Rect webViewFrame() const;
    Rect notchBarFrame() const;
    void startGuards();
    std::chrono::seconds idleLimit() const;
    void startIdleWatch();
    void startUsageTracking();
    void stopUsageTracking();
    void endContent();
    void installCoverWindows(const Screen& excluded);
    void removeCoverWindows();
    void installKeyMonitor();
    EventMonitors::Verdict filterKeyDown(const Event&);
    bool isExitPasswordRequired() const;
    void presentSealPrompt();
    void removeSealPrompt();
    void handleScreensChanged();

    bool isAddressAllowed(const std::string& address) const;
    bool shouldNavigate(const std::string& address) override;
    void didCommitNavigation() override;
    void didFinishNavigation() override;
    void didFailProvisionalNavigation(const LoadError&) override;
    void didFailNavigation(const LoadError&) override;
    void backForwardListDidChange() override;
    void pageProcessDidEnd(PageProcessEnd) override;
    void networkProcessDidEnd() override;
    bool shouldLoadInPlaceOfNewWindow(const std::string& address) override;
    void willOpenContextMenu(std::vector<std::string>& items) override;
    void refreshNavBar();
    void refreshNotchBar();
    LoadPhase loadPhase() const override;
    void reloadPage() override;
    void loadStartPage() override;
    void coverPage() override;

    inline static KioskController* s_shared = nullptr;

    Machine m_machine;

    SystemKeyBlocker m_keyBlocker;
    SystemHotKeyBlocker m_hotKeyBlocker;
    DisplaySleepBlocker m_sleepBlocker;
    HoldIndicatorModel m_holdModel;
    Connectivity m_connectivity;
    PageGuard m_pageGuard;
    IdleWatch m_idleWatch;
    Published<Color> m_notchColor { Color::black() };

    KioskSettings m_settings; ///< The copy that this run was started with.
    std::function<void()> m_onExit;
    std::optional<Url> m_currentStartURL;
    std::optional<SiteRules> m_siteRules;
    bool m_hasPage = false; ///< Whether there is a page that visitors could go on with.
    Screen m_screen;
    bool m_isActive = false;
    std::optional<PresentationOptions> m_savedPresentationOptions;

    // The views go before the window whose content they are.
    std::unique_ptr<KioskWindow> m_window;
    std::unique_ptr<KioskWebView> m_webView;
    std::unique_ptr<View> m_notchBar;
    std::unique_ptr<View> m_offlineHost;
    std::unique_ptr<View> m_holdHost;
    std::unique_ptr<KioskNavBar> m_navBar;
    std::unique_ptr<View> m_navBarView;
    std::unique_ptr<SealPrompt> m_prompt;
    std::unique_ptr<View> m_promptHost;
    std::vector<CoverWindow> m_coverWindows;

    Handle m_keyMonitor;
    Handle m_usageMonitor;
    Handle m_screensSubscription;
    Handle m_lateColorRefresh;
    std::function<void()> m_onScreenShown;
    Handle m_noticeObservation;
    Lifetime m_lifetime;
};

} // namespace quillox
