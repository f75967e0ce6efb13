#pragma once

#include "ports/Event.h"
#include "ports/WebView.h"

#include <memory>

namespace quillox {

/// The web view of a sealed run: one page that cannot be zoomed, swiped away or asked for a menu.
class KioskWebView {
public:
    /// `navigationDelegate` and `uiDelegate` must outlive this object.
    KioskWebView(WebViews& webViews, const WebViewConfiguration& configuration,
        NavigationDelegate& navigationDelegate, UIDelegate& uiDelegate);

    WebView& view() { return *m_view; }
    void load(const std::string& url) { m_view->load({ .url = url }); }
    void stopLoading() { m_view->stopLoading(); }

    /// Takes every item out of a context menu that is about to open, so that none does.
    static void emptyContextMenu(std::vector<std::string>& items) { items.clear(); }

private:
    std::unique_ptr<WebView> m_view;
};

/// What makes every element ignore the pointer.
constexpr auto scrollOnlyRule = "*,*::before,*::after{pointer-events:none !important;}";

/// The script that gives every frame that rule, so that pages only scroll. A page can undo it; it
/// cannot undo the same rule as a user style sheet.
UserScript scrollOnlyScript();

/// Whether the key moves a page up and down and presses nothing in it.
bool isScrollKey(KeyCode);

} // namespace quillox
