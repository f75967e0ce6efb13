#pragma once

#include "platform/linux/gtk/WidgetView.h"
#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/webkit/NetworkProcessWatch.h"
#include "platform/linux/webkit/PageBackground.h"
#include "platform/linux/webkit/PageLoad.h"
#include "platform/linux/webkit/PageProcessPing.h"
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

    void setNavigationDelegate(NavigationDelegate*) override;
    void setUIDelegate(UIDelegate* delegate) override { m_uiDelegate = delegate; }
    void setAllowsMagnification(bool) override;
    void setAllowsBackForwardNavigationGestures(bool) override;
    void load(const UrlRequest& request) override { m_load.load(request); }
    void loadInsistently(const UrlRequest&) override;
    void reload() override { m_load.reload(); }
    void stopLoading() override { m_load.stop(); }
    LoadPhase loadPhase() const override { return m_load.phase(); }
    std::string url() const override;
    bool canGoBack() const override { return webkit_web_view_can_go_back(m_view.get()); }
    bool canGoForward() const override { return webkit_web_view_can_go_forward(m_view.get()); }
    void goBack() override { webkit_web_view_go_back(m_view.get()); }
    void goForward() override { webkit_web_view_go_forward(m_view.get()); }
    void readUnderPageBackground(ColorCallback callback) override
    {
        m_background.read(std::move(callback));
    }
    void ping(std::function<void()> onAnswer) override { m_ping.ping(std::move(onAnswer)); }
    void endPageProcess() override;
    Gtk::Widget& widget() override { return *m_widget; }

private:
    void configure();
    void connectSignals();
    void connectProcessSignals();
    bool decidePolicy(WebKitPolicyDecision*, WebKitPolicyDecisionType);
    bool isNavigationAllowed(WebKitPolicyDecision*);
    bool isAnswerAccepted(WebKitResponsePolicyDecision*);
    void loadInPlaceOfNewWindow(WebKitNavigationAction*);
    bool showContextMenu(WebKitContextMenu*);
    void handleCommit();
    void handleProcessEnd(WebKitWebProcessTerminationReason);

    decltype(WebViewConfiguration::schemeHandlers) m_schemeHandlers; ///< Owned for its pages.
    GObjectOwner<WebKitUserContentManager> m_content;
    GObjectOwner<WebKitWebView> m_view;
    Gtk::Widget* m_widget; ///< The same object, as a widget; destroyed with it.
    PageLoad m_load;
    PageBackground m_background;
    PageProcessPing m_ping;
    NetworkProcessWatch m_networkProcess;
    NavigationDelegate* m_navigationDelegate = nullptr;
    UIDelegate* m_uiDelegate = nullptr;
};

} // namespace quillox
