// What the page of a run may do, and what the run does about it.

#include "kiosk/KioskController.h"

namespace quillox {

namespace {

    /// Pages settle their background a moment after they are there.
    constexpr std::chrono::milliseconds lateColorRefresh { 300 };

} // namespace

void KioskController::fixSiteRules(const Url& startURL)
{
    // Compared in the form that the web view gives to every address, as it does to those that it
    // asks about: with its own reading of case, of the host's alphabet and of detours in the path.
    auto site = m_settings;
    if (!site.isLocalSource())
        site.url = m_machine.webViews.canonicalURL(startURL.text());
    m_siteRules.emplace(site);
}

bool KioskController::isAllowed(const Url& url) const
{
    return m_siteRules && m_siteRules->isAllowed(url);
}

bool KioskController::isAddressAllowed(const std::string& address) const
{
    if (address.empty() || !m_siteRules)
        return false;
    if (m_siteRules->allowsEverything())
        return true;
    const auto url = Url::parse(address);
    return url && isAllowed(*url);
}

bool KioskController::shouldNavigate(const std::string& address)
{
    if (isAddressAllowed(address))
        return true;
    // Someone between here and the server leads away from the site before its first page.
    if (!m_hasPage)
        m_connectivity.handleMissingPage();
    return false;
}

bool KioskController::shouldLoadInPlaceOfNewWindow(const std::string& address)
{
    return isAddressAllowed(address);
}

void KioskController::didCommitNavigation()
{
    m_hasPage = true;
    m_pageGuard.handleCommittedLoad();
    refreshNavBar();
    refreshNotchBar();
}

void KioskController::didFinishNavigation()
{
    m_connectivity.handleFinishedLoad();
    m_pageGuard.handleFinishedLoad();
    refreshNavBar();
    refreshNotchBar();
    if (m_onScreenShown)
        m_onScreenShown();
    m_lateColorRefresh = m_machine.runLoop.after(lateColorRefresh, [this] { refreshNotchBar(); });
}

void KioskController::didFailProvisionalNavigation(const LoadError& error)
{
    m_connectivity.handleLoadFailure(error);
    // Nobody waits for a page that the engine would not show; but something must be there.
    const bool showsNothing = !m_hasPage || m_connectivity.model().offline.get();
    if (showsNothing && error.domain == LoadError::Domain::Engine)
        m_connectivity.handleMissingPage();
}

void KioskController::didFailNavigation(const LoadError& error)
{
    m_connectivity.handleLoadFailure(error);
}

void KioskController::backForwardListDidChange()
{
    refreshNavBar();
}

void KioskController::pageProcessDidEnd(PageProcessEnd end)
{
    m_hasPage = false;
    m_pageGuard.handlePageProcessEnd(end);
}

void KioskController::networkProcessDidEnd()
{
    m_pageGuard.handleNetworkProcessEnd();
}

void KioskController::willOpenContextMenu(std::vector<std::string>& items)
{
    KioskWebView::emptyContextMenu(items);
}

void KioskController::refreshNavBar()
{
    if (!m_navBar)
        return;
    m_navBar->backButton().state.set({ m_webView->view().canGoBack() });
    m_navBar->forwardButton().state.set({ m_webView->view().canGoForward() });
}

void KioskController::refreshNotchBar()
{
    if (!m_notchBar || m_settings.notchBarColor != NotchBarColor::pageBackground)
        return;
    m_webView->view().readUnderPageBackground(
        m_lifetime.guard([this](const std::optional<Color>& color) {
            m_notchColor.set(color.value_or(Color::black()));
        }));
}

LoadPhase KioskController::loadPhase() const
{
    return m_webView->view().loadPhase();
}

void KioskController::reloadPage()
{
    // Scripts change the address of their page without asking; what they made of it may lie
    // outside, where a reload would be refused.
    const auto present = m_webView->view().url();
    if (present.empty() || isAddressAllowed(present))
        m_webView->view().reload();
    else
        loadStartPage();
}

void KioskController::loadStartPage()
{
    m_webView->load(m_currentStartURL->text());
}

void KioskController::coverPage()
{
    m_connectivity.coverPage();
}

} // namespace quillox
