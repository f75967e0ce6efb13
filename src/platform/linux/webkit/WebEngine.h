#pragma once

#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/webkit/SchemeHandlerWebKit.h"
#include "ports/RunLoop.h"
#include "ports/WebView.h"

#include <webkit/webkit.h>

namespace quillox {

/// The web engine's processes and its one persistent store, made with the first web view and kept
/// from run to run. Pages run in the engine's sandbox.
class WebEngine final : public WebViews {
public:
    explicit WebEngine(RunLoop& runLoop)
        : m_runLoop(runLoop)
    {
    }

    /// Starts what every page needs, so that the first one comes sooner.
    void prepare();

    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) override;

private:
    WebKitNetworkSession* session();
    WebKitWebContext* context();

    RunLoop& m_runLoop;
    GObjectOwner<WebKitNetworkSession> m_session;
    GObjectOwner<WebKitWebContext> m_context;
    SchemeHandlerWebKit m_schemes;
};

} // namespace quillox
