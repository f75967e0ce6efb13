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

    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) override;

private:
    WebKitNetworkSession* session();

    RunLoop& m_runLoop;
    GObjectOwner<WebKitNetworkSession> m_session;
    GObjectOwner<WebKitWebContext> m_context;
    SchemeHandlerWebKit m_schemes;
};

} // namespace quillox
