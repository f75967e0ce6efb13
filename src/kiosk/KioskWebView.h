#pragma once

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

/// The script that makes every element of every frame ignore the pointer, so that pages only
/// scroll.
UserScript scrollOnlyScript();

} // namespace quillox
