#include "platform/linux/webkit/WebViewWebKit.h"

#include "platform/linux/webkit/WebViewSignals.h"

#include <algorithm>
#include <glibmm/wrap.h>

namespace quillox {

namespace {

    WebKitWebView* makeView(
        WebKitWebContext* context, WebKitNetworkSession* session, WebKitUserContentManager* content)
    {
        auto* view = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context,
            "network-session", session, "user-content-manager", content, nullptr));
        return WEBKIT_WEB_VIEW(g_object_ref_sink(view));
    }

    struct UserScriptUnref {
        void operator()(WebKitUserScript* script) const { webkit_user_script_unref(script); }
    };

    void addScript(WebKitUserContentManager* content, const UserScript& script)
    {
        const std::unique_ptr<WebKitUserScript, UserScriptUnref> made(
            webkit_user_script_new(script.source.c_str(),
                script.isForMainFrameOnly ? WEBKIT_USER_CONTENT_INJECT_TOP_FRAME
                                          : WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                WEBKIT_USER_SCRIPT_INJECT_AT_DOCUMENT_START, nullptr, nullptr));
        webkit_user_content_manager_add_script(content, made.get());
    }

    /// Takes the controllers of one type off the widget.
    void removeControllers(GtkWidget* widget, GType type)
    {
        const GObjectOwner<GListModel> controllers(gtk_widget_observe_controllers(widget));
        for (guint index = g_list_model_get_n_items(controllers.get()); index-- > 0;) {
            const GObjectOwner<GtkEventController> controller(
                GTK_EVENT_CONTROLLER(g_list_model_get_item(controllers.get(), index)));
            if (g_type_is_a(G_OBJECT_TYPE(controller.get()), type))
                gtk_widget_remove_controller(widget, controller.get());
        }
    }

} // namespace

WebViewWebKit::WebViewWebKit(WebKitWebContext* context, WebKitNetworkSession* session,
    const WebViewConfiguration& configuration, RunLoop& runLoop)
    : m_runLoop(runLoop)
    , m_schemeHandlers(configuration.schemeHandlers)
    , m_content(webkit_user_content_manager_new())
    , m_view(makeView(context, session, m_content.get()))
    , m_widget(Glib::wrap(GTK_WIDGET(m_view.get())))
{
    for (const auto& script : configuration.userScripts)
        addScript(m_content.get(), script);
    configure();
    connectSignals();
}

WebViewWebKit::~WebViewWebKit()
{
    g_signal_handlers_disconnect_by_data(m_view.get(), this);
    if (m_widget->get_parent())
        gtk_widget_unparent(GTK_WIDGET(m_view.get()));
}

void WebViewWebKit::configure()
{
    auto* settings = webkit_web_view_get_settings(m_view.get());
    webkit_settings_set_enable_fullscreen(settings, FALSE);
    webkit_settings_set_enable_developer_extras(settings, FALSE);
    webkit_settings_set_enable_media_stream(settings, FALSE);
    constexpr GdkRGBA black { 0, 0, 0, 1 };
    webkit_web_view_set_background_color(m_view.get(), &black);
    // The engine keeps a hidden text widget to look key bindings up in. When Tab runs off the end
    // of the page the keyboard would go there, and no key would reach the page again.
    for (auto* child = gtk_widget_get_first_child(GTK_WIDGET(m_view.get())); child;
         child = gtk_widget_get_next_sibling(child))
        gtk_widget_set_can_focus(child, FALSE);
}

void WebViewWebKit::setAllowsMagnification(bool allowed)
{
    // The engine has no switch for it; once taken off, the gesture stays off.
    if (!allowed)
        removeControllers(GTK_WIDGET(m_view.get()), GTK_TYPE_GESTURE_ZOOM);
}

void WebViewWebKit::setAllowsBackForwardNavigationGestures(bool allowed)
{
    webkit_settings_set_enable_back_forward_navigation_gestures(
        webkit_web_view_get_settings(m_view.get()), allowed);
}

void WebViewWebKit::load(const UrlRequest& request)
{
    m_timeout = request.timeout;
    webkit_web_view_load_uri(m_view.get(), request.url.c_str());
}

void WebViewWebKit::stopLoading()
{
    m_answerTimer.reset();
    webkit_web_view_stop_loading(m_view.get());
}

bool WebViewWebKit::decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type)
{
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
        auto* response = WEBKIT_RESPONSE_POLICY_DECISION(decision);
        if (webkit_response_policy_decision_is_mime_type_supported(response))
            return false;
        webkit_policy_decision_ignore(decision);
        return true;
    }
    auto* action = webkit_navigation_policy_decision_get_navigation_action(
        WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const auto* address = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    const bool isAllowed = type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION
        && (!m_navigationDelegate || m_navigationDelegate->shouldNavigate(address ? address : ""));
    if (isAllowed)
        webkit_policy_decision_use(decision);
    else
        webkit_policy_decision_ignore(decision);
    return true;
}

bool WebViewWebKit::showContextMenu(WebKitContextMenu* menu)
{
    std::vector<std::string> offered;
    for (auto* entry = webkit_context_menu_get_items(menu); entry; entry = entry->next) {
        auto* action = webkit_context_menu_item_get_gaction(WEBKIT_CONTEXT_MENU_ITEM(entry->data));
        offered.emplace_back(action ? g_action_get_name(action) : "");
    }
    auto wanted = offered;
    if (m_uiDelegate)
        m_uiDelegate->willOpenContextMenu(wanted);
    for (auto index = offered.size(); index-- > 0;) {
        if (std::ranges::find(wanted, offered[index]) == wanted.end()) {
            webkit_context_menu_remove(
                menu, webkit_context_menu_get_item_at_position(menu, static_cast<guint>(index)));
        }
    }
    return webkit_context_menu_get_n_items(menu) > 0;
}

void WebViewWebKit::handleLoadChanged(WebKitLoadEvent event)
{
    switch (event) {
    case WEBKIT_LOAD_STARTED:
    case WEBKIT_LOAD_REDIRECTED:
        m_hasFailed = false;
        // The engine waits for an answer for ever.
        m_answerTimer = m_runLoop.after(m_timeout, [this] { stopLoading(); });
        return;
    case WEBKIT_LOAD_COMMITTED:
        m_answerTimer.reset();
        if (m_navigationDelegate)
            m_navigationDelegate->didCommitNavigation();
        return;
    case WEBKIT_LOAD_FINISHED:
        m_answerTimer.reset();
        if (m_navigationDelegate && !m_hasFailed)
            m_navigationDelegate->didFinishNavigation();
        return;
    }
}

void WebViewWebKit::connectSignals()
{
    auto* view = m_view.get();
    const auto connect = [this, view](const char* signal, GCallback callback) {
        g_signal_connect(view, signal, callback, this);
    };
    connect("decide-policy",
        G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision,
                        WebKitPolicyDecisionType type, gpointer self) -> gboolean {
            return static_cast<WebViewWebKit*>(self)->decidePolicy(decision, type);
        }));
    connect("context-menu",
        G_CALLBACK(+[](WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*,
                        gpointer self) -> gboolean {
            return !static_cast<WebViewWebKit*>(self)->showContextMenu(menu);
        }));
    connect("load-changed", G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer self) {
        static_cast<WebViewWebKit*>(self)->handleLoadChanged(event);
    }));
    connect("load-failed",
        G_CALLBACK(
            +[](WebKitWebView*, WebKitLoadEvent, const char*, GError*, gpointer self) -> gboolean {
                static_cast<WebViewWebKit*>(self)->m_hasFailed = true;
                return TRUE; // No error page; what was shown stays.
            }));
    connect("load-failed-with-tls-errors",
        G_CALLBACK(+[](WebKitWebView*, const char*, GTlsCertificate*, GTlsCertificateFlags,
                        gpointer self) -> gboolean {
            static_cast<WebViewWebKit*>(self)->m_hasFailed = true;
            return TRUE;
        }));
    refuseEverythingElse(view);
}

} // namespace quillox
