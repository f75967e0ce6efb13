#include "platform/linux/webkit/WebEngine.h"

#include "platform/linux/system/OwnFiles.h"
#include "platform/linux/webkit/HelpWindowWebKit.h"
#include "platform/linux/webkit/WebViewWebKit.h"
#include "ports/SystemLog.h"

#include <filesystem>

namespace quillox {

namespace {

    struct MemoryPressureSettingsFree {
        void operator()(WebKitMemoryPressureSettings* settings) const
        {
            webkit_memory_pressure_settings_free(settings);
        }
    };

    constexpr double killThreshold = 0.95; ///< A part of the limit.
    constexpr double memoryPollInterval = 5; ///< Seconds. Each look takes 20 ms: it reads all maps.

    void cancelDownload(WebKitNetworkSession*, WebKitDownload* download, gpointer)
    {
        webkit_download_cancel(download);
    }

    /// Where the module lies that the engine loads into its processes, with nothing beside it.
    std::optional<std::string> findExtensionFolder()
    {
        const auto module = findOwnFile("web-extensions/" QUILLOX_WEB_EXTENSION,
            QUILLOX_INSTALLED_WEB_EXTENSIONS "/" QUILLOX_WEB_EXTENSION);
        if (!module)
            return std::nullopt;
        return std::filesystem::path(*module).parent_path().string();
    }

    /// Beside letters, digits and "-._~".
    constexpr auto asciiInAddresses = "!\"#$%&'()*+,/:;<=>?@[\\]^`{|}";

} // namespace

WebEngine::WebEngine(RunLoop& runLoop, SystemLog& log, unsigned pageMemoryLimit)
    : m_runLoop(runLoop)
    , m_log(log)
    , m_pageMemoryLimit(pageMemoryLimit)
    , m_extensionFolder(findExtensionFolder())
{
}

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
    // The desktop's keyring might ask to be unlocked.
    webkit_network_session_set_persistent_credential_storage_enabled(m_session.get(), FALSE);
    g_signal_connect(m_session.get(), "download-started", G_CALLBACK(cancelDownload), nullptr);
    return m_session.get();
}

WebKitWebContext* WebEngine::context(const std::string& siteFolder)
{
    // What a sandbox shows is settled with the first process of its context.
    if (m_context && m_siteFolder == siteFolder)
        return m_context.get();
    m_schemes.abandon();
    m_context = makeContext();
    m_siteFolder = siteFolder;
    loadIntoPages(m_context.get(), siteFolder);
    return m_context.get();
}

GObjectOwner<WebKitWebContext> WebEngine::makeContext() const
{
    if (m_pageMemoryLimit == 0)
        return GObjectOwner<WebKitWebContext>(webkit_web_context_new());
    const std::unique_ptr<WebKitMemoryPressureSettings, MemoryPressureSettingsFree> settings(
        webkit_memory_pressure_settings_new());
    webkit_memory_pressure_settings_set_memory_limit(settings.get(), m_pageMemoryLimit);
    webkit_memory_pressure_settings_set_kill_threshold(settings.get(), killThreshold);
    webkit_memory_pressure_settings_set_poll_interval(settings.get(), memoryPollInterval);
    return GObjectOwner<WebKitWebContext>(WEBKIT_WEB_CONTEXT(g_object_new(
        WEBKIT_TYPE_WEB_CONTEXT, "memory-pressure-settings", settings.get(), nullptr)));
}

void WebEngine::loadIntoPages(WebKitWebContext* context, const std::string& siteFolder)
{
    if (!m_extensionFolder) {
        if (!siteFolder.empty())
            m_log.write(
                "Quillox: audio and video of local sites do not play; " QUILLOX_WEB_EXTENSION
                " is not installed.");
        return;
    }
    if (!siteFolder.empty())
        webkit_web_context_add_path_to_sandbox(context, siteFolder.c_str(), TRUE);
    webkit_web_context_add_path_to_sandbox(context, m_extensionFolder->c_str(), TRUE);
    webkit_web_context_set_web_process_extensions_directory(context, m_extensionFolder->c_str());
    webkit_web_context_set_web_process_extensions_initialization_user_data(
        context, g_variant_new_string(siteFolder.c_str()));
}

void WebEngine::prepare()
{
    if (!m_context)
        context({});
    // Any request starts the network process; this one stays on the machine.
    webkit_network_session_prefetch_dns(session(), "localhost");
}

std::unique_ptr<HelpWindow> WebEngine::makeHelpWindow(Gtk::Window* parent)
{
    return std::make_unique<HelpWindowWebKit>(parent);
}

std::unique_ptr<WebView> WebEngine::makeWebView(const WebViewConfiguration& configuration)
{
    auto* const page = context(configuration.siteFolder);
    m_schemes.serve(page, configuration.schemeHandlers);
    return std::make_unique<WebViewWebKit>(page, session(), configuration, m_runLoop);
}

std::string WebEngine::canonicalURL(const std::string& url) const
{
    // A request takes every byte for a character; escaped, the bytes of UTF-8 are read as they are
    // meant.
    const GTextOwner escaped(g_uri_escape_string(url.c_str(), asciiInAddresses, FALSE));
    const GObjectOwner<WebKitURIRequest> request(webkit_uri_request_new(escaped.get()));
    const auto* const read = webkit_uri_request_get_uri(request.get());
    return read ? read : "";
}

} // namespace quillox
