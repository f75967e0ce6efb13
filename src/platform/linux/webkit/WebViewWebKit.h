#pragma once

#include "platform/linux/gtk/WidgetView.h"
#include "platform/linux/system/GlibOwner.h"
#include "ports/RunLoop.h"
#include "ports/WebView.h"

#include <webkit/webkit.h>

namespace quillox {

/// One web view of the engine, with everything switched off that would show something of the
/// engine's own.
class WebViewWebKit final : public WebView, public WidgetView {
public:
    WebViewWebKit(WebKitWebContext*, WebKitNetworkSession*, const WebViewConfiguration&, RunLoop&);
    ~WebViewWebKit() override;

    void setNavigationDelegate(NavigationDelegate* delegate) override
    {
        m_navigationDelegate = delegate;
    }
    void setUIDelegate(UIDelegate* delegate) override { m_uiDelegate = delegate; }
    void setAllowsMagnification(bool) override;
    void setAllowsBackForwardNavigationGestures(bool) override;
    void load(const UrlRequest&) override;
    void stopLoading() override;
    Gtk::Widget& widget() override { return *m_widget; }

private:
    void configure();
    void connectSignals();
    bool decidePolicy(WebKitPolicyDecision*, WebKitPolicyDecisionType);
    bool showContextMenu(WebKitContextMenu*);
    void handleLoadChanged(WebKitLoadEvent);

    RunLoop& m_runLoop;
    decltype(WebViewConfiguration::schemeHandlers) m_schemeHandlers; ///< Owned for its pages.
    GObjectOwner<WebKitUserContentManager> m_content;
    GObjectOwner<WebKitWebView> m_view;
    Gtk::Widget* m_widget; ///< The same object, as a widget; destroyed with it.
    NavigationDelegate* m_navigationDelegate = nullptr;
    UIDelegate* m_uiDelegate = nullptr;
    std::chrono::seconds m_timeout { 60 };
    Handle m_answerTimer; ///< Runs while an answer to a load is awaited.
    bool m_hasFailed = false; ///< The engine says that a failed load is finished, too.
};

} // namespace quillox
