#include "platform/linux/webkit/WebViewWebKit.h"

#include "platform/linux/gtk/Popups.h"
#include "platform/linux/webkit/WebViewInput.h"
#include "platform/linux/webkit/WebViewSettings.h"
#include "platform/linux/webkit/WebViewSignals.h"

#include <algorithm>
#include <glibmm/wrap.h>
#include <utility>

namespace quillox {

namespace {

    WebKitWebView* makeView(
        WebKitWebContext* context, WebKitNetworkSession* session, WebKitUserContentManager* content)
    {
        // An exhibit speaks by itself; nobody is asked whether it may.
        const GObjectOwner<WebKitWebsitePolicies> policies(
            webkit_website_policies_new_with_policies("autoplay", WEBKIT_AUTOPLAY_ALLOW, nullptr));
        auto* view = WEBKIT_WEB_VIEW(
            g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context, "network-session", session,
                "user-content-manager", content, "website-policies", policies.get(), nullptr));
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

    struct StyleSheetUnref {
        void operator()(WebKitUserStyleSheet* sheet) const { webkit_user_style_sheet_unref(sheet); }
    };

    void addStyleSheet(WebKitUserContentManager* content, const std::string& rules)
    {
        const std::unique_ptr<WebKitUserStyleSheet, StyleSheetUnref> made(
            webkit_user_style_sheet_new(rules.c_str(), WEBKIT_USER_CONTENT_INJECT_ALL_FRAMES,
                WEBKIT_USER_STYLE_LEVEL_USER, nullptr, nullptr));
        webkit_user_content_manager_add_style_sheet(content, made.get());
    }

    std::string addressOf(WebKitNavigationAction* action)
    {
        const auto* address
            = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
        return address ? address : "";
    }

    PageProcessEnd translateEnd(WebKitWebProcessTerminationReason reason)
    {
        switch (reason) {
        case WEBKIT_WEB_PROCESS_CRASHED:
            break;
        case WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT:
            return PageProcessEnd::ExceededMemoryLimit;
        case WEBKIT_WEB_PROCESS_TERMINATED_BY_API:
            return PageProcessEnd::Requested;
        }
        return PageProcessEnd::Crashed;
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
    : m_schemeHandlers(configuration.schemeHandlers)
    , m_content(webkit_user_content_manager_new())
    , m_view(makeView(context, session, m_content.get()))
    , m_widget(Glib::wrap(GTK_WIDGET(m_view.get())))
    , m_load(m_view.get(), runLoop)
    , m_background(m_view.get())
    , m_ping(m_view.get())
    , m_networkProcess([this] {
        if (m_navigationDelegate)
            m_navigationDelegate->networkProcessDidEnd();
    })
{
    for (const auto& script : configuration.userScripts)
        addScript(m_content.get(), script);
    if (!configuration.userStyleSheet.empty())
        addStyleSheet(m_content.get(), configuration.userStyleSheet);
    configure();
    connectSignals();
    connectProcessSignals();
}

WebViewWebKit::~WebViewWebKit()
{
    auto* history = webkit_web_view_get_back_forward_list(m_view.get());
    g_signal_handlers_disconnect_by_data(history, this);
    g_signal_handlers_disconnect_by_data(m_view.get(), this);
    if (m_widget->get_parent())
        gtk_widget_unparent(GTK_WIDGET(m_view.get()));
}

void WebViewWebKit::setNavigationDelegate(NavigationDelegate* delegate)
{
    m_navigationDelegate = delegate;
    m_load.setDelegate(delegate);
}

void WebViewWebKit::configure()
{
    restrictSettings(webkit_web_view_get_settings(m_view.get()));
    closeInputWays(m_view.get());
    constexpr GdkRGBA black { 0, 0, 0, 1 };
    webkit_web_view_set_background_color(m_view.get(), &black);
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

void WebViewWebKit::loadInsistently(const UrlRequest& request)
{
    // A list that the page has open would stay over the next one.
    closePopups(GTK_WIDGET(m_view.get()));
    m_load.loadInsistently(request);
}

std::string WebViewWebKit::url() const
{
    const auto* url = webkit_web_view_get_uri(m_view.get());
    return url ? url : "";
}

void WebViewWebKit::endPageProcess()
{
    webkit_web_view_terminate_web_process(m_view.get());
}

void WebViewWebKit::handleCommit()
{
    m_ping.reset();
    m_networkProcess.refresh();
}

void WebViewWebKit::handleProcessEnd(WebKitWebProcessTerminationReason reason)
{
    m_ping.reset();
    const bool madeRoom = m_load.handleProcessEnd();
    if (m_navigationDelegate)
        m_navigationDelegate->pageProcessDidEnd(
            madeRoom ? PageProcessEnd::MadeRoom : translateEnd(reason));
    if (madeRoom)
        m_load.loadAgain();
}

bool WebViewWebKit::decidePolicy(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type)
{
    const bool isAllowed = type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE
        ? isAnswerAccepted(WEBKIT_RESPONSE_POLICY_DECISION(decision))
        : isNavigationAllowed(decision);
    if (isAllowed)
        webkit_policy_decision_use(decision);
    else
        webkit_policy_decision_ignore(decision);
    return true;
}

bool WebViewWebKit::isNavigationAllowed(WebKitPolicyDecision* decision)
{
    auto* action = webkit_navigation_policy_decision_get_navigation_action(
        WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const auto address = addressOf(action);
    if (m_navigationDelegate && !m_navigationDelegate->shouldNavigate(address))
        return false;
    if (address == "about:blank")
        m_load.expectEmptyPage();
    return true;
}

bool WebViewWebKit::isAnswerAccepted(WebKitResponsePolicyDecision* decision)
{
    auto* response = webkit_response_policy_decision_get_response(decision);
    if (webkit_response_policy_decision_is_main_frame_main_resource(decision)
        && isServerError(webkit_uri_response_get_status_code(response))) {
        m_load.rejectAnswer({ LoadError::Domain::UrlLoading, urlErrors::badServerResponse,
            "the server has an error of its own" });
        return false;
    }
    return webkit_response_policy_decision_is_mime_type_supported(decision)
        && !isMeantToBeSaved(response);
}

void WebViewWebKit::loadInPlaceOfNewWindow(WebKitNavigationAction* action)
{
    if (m_uiDelegate && m_uiDelegate->shouldLoadInPlaceOfNewWindow(addressOf(action)))
        webkit_web_view_load_request(m_view.get(), webkit_navigation_action_get_request(action));
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
    connect("create",
        G_CALLBACK(
            +[](WebKitWebView*, WebKitNavigationAction* action, gpointer self) -> GtkWidget* {
                static_cast<WebViewWebKit*>(self)->loadInPlaceOfNewWindow(action);
                return nullptr;
            }));
    refuseEverythingElse(view);
}

void WebViewWebKit::connectProcessSignals()
{
    g_signal_connect(m_view.get(), "web-process-terminated",
        G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason reason, gpointer self) {
            static_cast<WebViewWebKit*>(self)->handleProcessEnd(reason);
        }),
        this);
    g_signal_connect(m_view.get(), "load-changed",
        G_CALLBACK(+[](WebKitWebView*, WebKitLoadEvent event, gpointer self) {
            if (event == WEBKIT_LOAD_COMMITTED)
                static_cast<WebViewWebKit*>(self)->handleCommit();
        }),
        this);
    g_signal_connect(webkit_web_view_get_back_forward_list(m_view.get()), "changed",
        G_CALLBACK(+[](WebKitBackForwardList*, gpointer, gpointer, gpointer self) {
            if (auto* delegate = static_cast<WebViewWebKit*>(self)->m_navigationDelegate)
                delegate->backForwardListDidChange();
        }),
        this);
}

} // namespace quillox
