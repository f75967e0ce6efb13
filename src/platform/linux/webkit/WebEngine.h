#pragma once

#include "platform/linux/engine/Engine.h"
#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/webkit/SchemeHandlerWebKit.h"
#include "ports/RunLoop.h"

#include <optional>
#include <webkit/webkit.h>

namespace quillox {

class SystemLog;

/// The web engine's processes and its one persistent store, made with the first web view and kept
/// from run to run. Pages run in the engine's sandbox, which shows them of this machine's files
/// little more than the site's folder.
class WebEngine final : public Engine {
public:
    /// `pageMemoryLimit` as `MakeEngine` has it.
    WebEngine(RunLoop&, SystemLog&, unsigned pageMemoryLimit);

    void prepare() override;
    std::unique_ptr<HelpWindow> makeHelpWindow(Gtk::Window* parent) override;
    bool isAvailable() override { return true; }
    std::unique_ptr<WebView> makeWebView(const WebViewConfiguration&) override;
    std::string canonicalURL(const std::string& url) const override;

private:
    WebKitNetworkSession* session();
    WebKitWebContext* context(const std::string& siteFolder);
    GObjectOwner<WebKitWebContext> makeContext() const;
    void loadIntoPages(WebKitWebContext*, const std::string& siteFolder);

    RunLoop& m_runLoop;
    SystemLog& m_log;
    unsigned m_pageMemoryLimit;
    std::optional<std::string> m_extensionFolder; ///< None when the module is not installed.
    GObjectOwner<WebKitNetworkSession> m_session;
    std::string m_siteFolder; ///< Of the context.
    GObjectOwner<WebKitWebContext> m_context;
    SchemeHandlerWebKit m_schemes; ///< Of the context.
};

} // namespace quillox
