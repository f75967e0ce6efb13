#include "platform/linux/webkit/WebEngine.h"

#include "platform/linux/webkit/WebViewWebKit.h"

#include <string>

namespace quillox {

namespace {

    void cancelDownload(WebKitNetworkSession*, WebKitDownload* download, gpointer)
    {
        webkit_download_cancel(download);
    }

} // namespace

WebKitNetworkSession* WebEngine::session()
{
    if (m_session)
        return m_session.get();
    const auto data = std::string(g_get_user_data_dir()) + "/Quillox/web";
    const auto cache = std::string(g_get_user_cache_dir()) + "/Quillox/web";
    m_session.reset(webkit_network_session_new(data.c_str(), cache.c_str()));
    webkit_cookie_manager_set_persistent_storage(
        webkit_network_session_get_cookie_manager(m_session.get()), (data + "/cookies").c_str(),
        WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    g_signal_connect(m_session.get(), "download-started", G_CALLBACK(cancelDownload), nullptr);
    return m_session.get();
}

WebKitWebContext* WebEngine::context()
{
    if (!m_context)
        m_context.reset(webkit_web_context_new());
    return m_context.get();
}

void WebEngine::prepare()
{
    context();
    // Any request starts the network process; this one stays on the machine.
    webkit_network_session_prefetch_dns(session(), "localhost");
}

std::unique_ptr<WebView> WebEngine::makeWebView(const WebViewConfiguration& configuration)
{
    m_schemes.serve(context(), configuration.schemeHandlers);
    return std::make_unique<WebViewWebKit>(context(), session(), configuration, m_runLoop);
}

} // namespace quillox
