// The windows of a run: what they hold, and how they follow the displays.

#include "config/HostSyntax.h"
#include "kiosk/Displays.h"
#include "kiosk/KioskController.h"
#include "local/LocalSchemeHandler.h"
#include "ports/FileSystem.h"

#include <algorithm>
#include <utility>

namespace quillox {

namespace {

    /// The page reaches this far below the screen, so that no line of window background shows
    /// there.
    constexpr double overhang = 1;

    /// Two screens that mirror each other show the same part of the plane.
    bool isInside(const Rect& inner, const Rect& outer)
    {
        return inner.x >= outer.x && inner.y >= outer.y
            && inner.x + inner.width <= outer.x + outer.width
            && inner.y + inner.height <= outer.y + outer.height;
    }

    Connectivity::Source sourceOf(const KioskSettings& settings, const SiteRules& rules)
    {
        if (settings.isLocalSource())
            return Connectivity::Source::LocalFolder;
        return isLoopbackHost(rules.startHost().value_or("")) ? Connectivity::Source::ThisMachine
                                                              : Connectivity::Source::Network;
    }

    constexpr Autoresizing fill { .width = true, .height = true };
    constexpr Autoresizing topBand { .width = true, .bottomMargin = true };

} // namespace

std::optional<Screen> KioskController::chooseScreen() const
{
    if (const auto chosen = Displays::screen(m_machine.screens, m_settings.displayID))
        return chosen;
    if (const auto main = m_machine.screens.mainScreen())
        return main;
    const auto all = m_machine.screens.list();
    return all.empty() ? std::nullopt : std::optional(all.front());
}

WebViewConfiguration KioskController::webViewConfiguration() const
{
    WebViewConfiguration configuration;
    if (const auto root = m_settings.localRootURL(m_machine.fileSystem)) {
        configuration.schemeHandlers[LocalSchemeHandler::scheme]
            = std::make_shared<LocalSchemeHandler>(*root, m_machine.siteFiles, m_machine.fileTypes);
        configuration.siteFolder = *root;
    }
    if (m_settings.scrollOnly) {
        configuration.userScripts.push_back(scrollOnlyScript());
        configuration.userStyleSheet = scrollOnlyRule;
    }
    return configuration;
}

void KioskController::buildWindow()
{
    m_webView
        = std::make_unique<KioskWebView>(m_machine.webViews, webViewConfiguration(), *this, *this);
    m_hasPage = false;
    m_pageGuard.start(m_webView->view());
    loadStartPage();
    m_window = std::make_unique<KioskWindow>(m_machine.windows, m_screen);
    auto container = m_machine.windows.makeContainer(m_screen.frame);
    buildContent(*container);
    m_window->setContentView(std::move(container));
    m_window->makeKeyAndOrderFront();
}

void KioskController::buildContent(Container& container)
{
    const Rect everything { 0, 0, m_screen.frame.width, m_screen.frame.height };
    auto& page = m_webView->view();
    container.add(page, webViewFrame(), fill);
    m_notchColor.set(Color::black());
    placeNotchBar(container);
    m_connectivity.reset(sourceOf(m_settings, *m_siteRules));
    m_offlineHost = m_machine.kioskViews.makeOfflineNotice(m_connectivity.model());
    container.add(*m_offlineHost, everything, fill);
    if (!m_settings.isLocalSource())
        m_connectivity.startNetworkMonitor();
    m_holdModel.progress.set(0);
    m_holdHost = m_machine.sealViews.makeHoldIndicator(m_holdModel);
    container.add(*m_holdHost, everything, fill);
    installNavBar(container);
}

void KioskController::placeNotchBar(Container& container)
{
    if (topInset() <= 0)
        return m_notchBar.reset();
    if (m_notchBar)
        return container.move(*m_notchBar, notchBarFrame());
    m_notchBar = m_machine.kioskViews.makeNotchBar(m_notchColor);
    if (m_offlineHost)
        container.addBelow(*m_offlineHost, *m_notchBar, notchBarFrame(), topBand);
    else
        container.add(*m_notchBar, notchBarFrame(), topBand);
    refreshNotchBar();
}

void KioskController::installNavBar(Container& container)
{
    auto bar = std::make_unique<KioskNavBar>(
        m_settings.showBack, m_settings.showForward, m_settings.showRefresh, m_settings.showHome);
    if (bar->stack().empty())
        return;
    m_navBar = std::move(bar);
    m_navBar->onBack = m_lifetime.guard([this] { m_webView->view().goBack(); });
    m_navBar->onForward = m_lifetime.guard([this] { m_webView->view().goForward(); });
    m_navBar->onRefresh = m_lifetime.guard([this] { reloadPage(); });
    m_navBar->onHome = m_lifetime.guard([this] { loadStartPage(); });
    refreshNavBar();
    m_navBarView = m_machine.kioskViews.makeNavBar(*m_navBar);
    container.add(*m_navBarView, navBarFrame(), KioskNavBar::autoresizing(m_settings.navPosition));
}

double KioskController::topInset() const
{
    return m_settings.avoidNotch ? m_screen.safeAreaTop : 0;
}

Rect KioskController::webViewFrame() const
{
    return { 0, -overhang, m_screen.frame.width, m_screen.frame.height - topInset() + overhang };
}

Rect KioskController::notchBarFrame() const
{
    return { 0, m_screen.frame.height - topInset(), m_screen.frame.width, topInset() };
}

Rect KioskController::navBarFrame() const
{
    return m_navBar->frame(
        m_screen.frame, m_settings.navPosition, topInset(), m_screen.safeAreaTop);
}

void KioskController::installCoverWindows(const Screen& excluded)
{
    auto old = std::exchange(m_coverWindows, {});
    if (!m_machine.windows.canCoverSeparateScreens())
        return;
    for (const auto& screen : m_machine.screens.list()) {
        if (screen.displayNumber == excluded.displayNumber
            || isInside(screen.frame, excluded.frame))
            continue;
        const auto present = std::ranges::find_if(old, [&](const CoverWindow& cover) {
            return cover.window && cover.displayNumber == screen.displayNumber;
        });
        auto window = present != old.end() ? std::move(present->window)
                                           : m_machine.windows.makeWindow(coverWindowSpec(screen));
        window->setFrame(screen.displayNumber, screen.frame);
        window->orderFrontRegardless();
        m_coverWindows.push_back({ screen.displayNumber, std::move(window) });
    }
    for (const auto& cover : old) {
        if (cover.window)
            cover.window->orderOut();
    }
}

void KioskController::removeCoverWindows()
{
    for (const auto& cover : m_coverWindows)
        cover.window->orderOut();
    m_coverWindows.clear();
}

void KioskController::handleScreensChanged()
{
    // With every output gone the windows stay as they are and wait for the next one.
    const auto screen = chooseScreen();
    if (!screen)
        return;
    // Also when the frame seems the same: it tells where the screen is beside the main one, which
    // may have moved.
    m_screen = *screen;
    m_window->platformWindow().setFrame(m_screen.displayNumber, m_screen.frame);
    if (auto* container = m_window->contentView()) {
        container->move(m_webView->view(), webViewFrame());
        placeNotchBar(*container);
        if (m_navBarView)
            container->move(*m_navBarView, navBarFrame());
    }
    installCoverWindows(m_screen);
    m_window->makeKeyAndOrderFront();
}

} // namespace quillox
