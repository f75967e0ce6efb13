#include "kiosk/KioskWebView.h"

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
