#include "kiosk/KioskController.h"

#include "ports/FileSystem.h"
#include "support/CanonicalText.h"
#include "usage/UsageTracker.h"

#include <algorithm>
#include <utility>

namespace quillox {

namespace {

    constexpr auto sealedPresentation = PresentationOptions::HideDock
        | PresentationOptions::HideMenuBar | PresentationOptions::DisableAppleMenu
        | PresentationOptions::DisableProcessSwitching | PresentationOptions::DisableForceQuit
        | PresentationOptions::DisableSessionTermination
        | PresentationOptions::DisableHideApplication
        | PresentationOptions::DisableMenuBarTransparency;

    constexpr std::chrono::seconds defaultSessionGap { 60 };

} // namespace

KioskController::KioskController(Machine machine)
    : m_machine(machine)
    , m_keyBlocker({ machine.runLoop, machine.eventTaps, machine.keyState, machine.log })
    , m_hotKeyBlocker(machine.symbolicHotKeys, machine.log)
    , m_sleepBlocker(machine.powerAssertions, machine.log)
    , m_connectivity(machine.runLoop, machine.pathMonitors, *this)
    , m_pageGuard(machine.runLoop, machine.log, *this)
    , m_idleWatch(machine.runLoop, machine.eventMonitors)
{
    m_noticeObservation = m_connectivity.model().offline.observe([this](bool isOffline) {
        if (isOffline && m_onScreenShown)
            m_onScreenShown();
    });
}

KioskController::~KioskController()
{
    m_onExit = nullptr;
    stop();
}

bool KioskController::start(const KioskSettings& settings, std::function<void()> onExit)
{
    if (m_isActive)
        return false;
    const auto startURL = settings.kioskStartURL();
    if (!startURL || !canShowPages())
        return false;

    m_settings = settings;
    m_onExit = std::move(onExit);
    m_currentStartURL = startURL;
    // Without any output the run waits behind a window of this size until one appears.
    m_screen = chooseScreen().value_or(Screen { 0, "", { 0, 0, 1024, 768 }, 0 });

    fixSiteRules(*startURL);
    buildWindow();
    m_machine.application.activate(true);
    installCoverWindows(m_screen);
    m_savedPresentationOptions = m_machine.application.presentationOptions();
    m_machine.application.setPresentationOptions(sealedPresentation);
    startGuards();
    installKeyMonitor();
    startIdleWatch();
    startUsageTracking();

    m_screensSubscription = m_machine.screens.onChange([this] { handleScreensChanged(); });
    m_isActive = true;
    return true;
}

bool KioskController::canShowPages() const
{
    return m_machine.webViews.isAvailable();
}

void KioskController::startGuards()
{
    m_keyBlocker.onExitCombo = m_lifetime.guard([this] { requestExit(); });
    m_keyBlocker.onHoldProgress
        = m_lifetime.guard([this](double progress) { m_holdModel.progress.set(progress); });
    // The run goes on without the lock; the key monitor then catches the gesture.
    static_cast<void>(m_keyBlocker.start());
    m_hotKeyBlocker.disable();
    m_sleepBlocker.start();
}

std::chrono::seconds KioskController::idleLimit() const
{
    // Whatever was typed: nobody waits for more than a year.
    return std::chrono::seconds(
        std::clamp<std::int64_t>(m_settings.idleResetSeconds, 0, 366 * 86400));
}

void KioskController::startIdleWatch()
{
    m_idleWatch.start(idleLimit(),
        [this] { m_webView->view().loadInsistently({ .url = m_currentStartURL->text() }); });
}

void KioskController::startUsageTracking()
{
    const auto gap = idleLimit();
    m_machine.usageTracker.begin(
        m_settings.usageSourceKey(), gap >= std::chrono::seconds(1) ? gap : defaultSessionGap);
    m_usageMonitor = m_machine.eventMonitors.addLocalMonitor(activityMask, [this](const Event&) {
        m_machine.usageTracker.recordActivity(m_machine.runLoop.now());
        return EventMonitors::Verdict::Pass;
    });
}

void KioskController::stopUsageTracking()
{
    m_machine.usageTracker.end();
    m_usageMonitor.reset();
}

void KioskController::installKeyMonitor()
{
    m_keyMonitor = m_machine.eventMonitors.addLocalMonitor(
        maskOf(EventType::KeyDown), [this](const Event& event) { return filterKeyDown(event); });
}

EventMonitors::Verdict KioskController::filterKeyDown(const Event& event)
{
    if (!m_keyBlocker.isRunning() && event.keyCode == keys::s
        && containsAll(event.flags, sealModifiers)) {
        requestExit();
        return EventMonitors::Verdict::Swallow;
    }
    // The prompt needs every key while it is open.
    const bool onlyScrolls = m_settings.scrollOnly && !m_promptHost;
    const bool isKept = containsAny(event.flags, shortcutModifiers)
        || isKeptFromPages(event.keyCode) || (onlyScrolls && !isScrollKey(event.keyCode));
    return isKept ? EventMonitors::Verdict::Swallow : EventMonitors::Verdict::Pass;
}

bool KioskController::isExitPasswordRequired() const
{
    return m_settings.requireExitPassword && !m_settings.exitPassword.empty();
}

void KioskController::requestExit()
{
    if (isExitPasswordRequired())
        presentSealPrompt();
    else
        stop();
}

void KioskController::presentSealPrompt()
{
    if (m_promptHost || !m_window || !m_window->contentView())
        return;
    m_prompt = std::make_unique<SealPrompt>(
        SealPrompt::Question {
            .title = "BREAK SEAL",
            .message = "Enter the exit password to leave kiosk mode",
            .validate
            = [password = m_settings.exitPassword](
                  const std::string& text) { return areCanonicallyEquivalent(text, password); },
            .onSuccess = m_lifetime.guard([this] {
                dismissSealPrompt();
                stop();
            }),
            .onCancel = m_lifetime.guard([this] { dismissSealPrompt(); }),
        },
        m_machine.runLoop);
    m_promptHost = m_machine.sealViews.makePrompt(*m_prompt);
    auto& content = *m_window->contentView();
    content.add(*m_promptHost, { 0, 0, m_screen.frame.width, m_screen.frame.height },
        { .width = true, .height = true });
    content.setExclusive(m_promptHost.get());
    m_window->makeKeyAndOrderFront();
    m_prompt->appear();
}

void KioskController::removeSealPrompt()
{
    m_promptHost.reset();
    m_prompt.reset();
}

void KioskController::dismissSealPrompt()
{
    if (m_window && m_window->contentView())
        m_window->contentView()->setExclusive(nullptr);
    removeSealPrompt();
    if (m_webView && m_window)
        m_window->platformWindow().makeFirstResponder(m_webView->view());
}

void KioskController::stop()
{
    if (!m_isActive)
        return;
    m_keyBlocker.stop();
    m_sleepBlocker.stop();
    m_hotKeyBlocker.restore();
    m_screensSubscription.reset();
    m_idleWatch.stop();
    stopUsageTracking();
    removeCoverWindows();
    m_connectivity.stopNetworkMonitor();
    m_pageGuard.stop();
    endContent();
    m_isActive = false;
    m_machine.application.bringVisibleWindowsForward();
    m_machine.application.activate(true);
    // The callback may start the next run, which replaces it.
    if (const auto onExit = m_onExit)
        onExit();
}

void KioskController::endContent()
{
    m_lateColorRefresh.reset();
    m_navBarView.reset();
    m_navBar.reset();
    m_notchBar.reset();
    m_offlineHost.reset();
    removeSealPrompt();
    m_holdHost.reset();
    m_keyMonitor.reset();
    if (m_savedPresentationOptions)
        m_machine.application.setPresentationOptions(*m_savedPresentationOptions);
    // What it would tell of a load that ends now concerns nobody any more.
    m_webView->view().setNavigationDelegate(nullptr);
    m_webView->stopLoading();
    m_window->orderOut();
    m_window->setContentView(nullptr);
    m_webView.reset();
    m_window.reset();
    m_siteRules.reset();
}

} // namespace quillox
