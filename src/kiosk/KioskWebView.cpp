#include "kiosk/KioskWebView.h"

#include <algorithm>
#include <array>

namespace quillox {

KioskWebView::KioskWebView(WebViews& webViews, const WebViewConfiguration& configuration,
    NavigationDelegate& navigationDelegate, UIDelegate& uiDelegate)
    : m_view(webViews.makeWebView(configuration))
{
    m_view->setNavigationDelegate(&navigationDelegate);
    m_view->setUIDelegate(&uiDelegate);
    m_view->setAllowsMagnification(false);
    m_view->setAllowsBackForwardNavigationGestures(false);
}

bool isScrollKey(KeyCode key)
{
    constexpr std::array keysThatScroll { keys::home, keys::pageUp, keys::end, keys::pageDown,
        keys::leftArrow, keys::rightArrow, keys::downArrow, keys::upArrow };
    return std::ranges::find(keysThatScroll, key) != keysThatScroll.end();
}

UserScript scrollOnlyScript()
{
    return {
        .source = "(function () {\n"
                  "  var css = '*,*::before,*::after{pointer-events:none !important;}';\n"
                  "  var style = document.createElement('style');\n"
                  "  style.textContent = css;\n"
                  "  (document.head || document.documentElement).appendChild(style);\n"
                  "})();",
        .isForMainFrameOnly = false,
    };
}

} // namespace quillox
