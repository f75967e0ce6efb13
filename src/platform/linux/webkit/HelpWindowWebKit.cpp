#include "platform/linux/webkit/HelpWindowWebKit.h"

#include "platform/linux/gtk/Toplevel.h"
#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/webkit/WebViewInput.h"
#include "platform/linux/webkit/WebViewSettings.h"
#include "platform/linux/webkit/WebViewSignals.h"
#include "ui/HelpPages.h"

#include <algorithm>
#include <array>
#include <glibmm/bytes.h>
#include <glibmm/wrap.h>
#include <gtkmm/box.h>
#include <gtkmm/button.h>
#include <gtkmm/label.h>
#include <string_view>

namespace quillox {

namespace {

    constexpr auto guidePath = "/com/orvendal/quillox/setup-guide/index.html";
    constexpr int width = 880;
    constexpr int height = 720;

    constexpr double zoomStep = 1.2;
    constexpr double leastZoom = 0.5;
    constexpr double mostZoom = 4;

    /// Alone or with Shift.
    constexpr std::array readingKeys { GDK_KEY_Tab, GDK_KEY_ISO_Left_Tab, GDK_KEY_Up, GDK_KEY_Down,
        GDK_KEY_Left, GDK_KEY_Right, GDK_KEY_Page_Up, GDK_KEY_Page_Down, GDK_KEY_Home, GDK_KEY_End,
        GDK_KEY_space, GDK_KEY_Return, GDK_KEY_KP_Enter, GDK_KEY_KP_Up, GDK_KEY_KP_Down,
        GDK_KEY_KP_Page_Up, GDK_KEY_KP_Page_Down, GDK_KEY_KP_Home, GDK_KEY_KP_End };

    std::string pageOf(std::string_view address)
    {
        return std::string(address.substr(0, address.find('#')));
    }

    bool isWebAddress(std::string_view address)
    {
        return address.starts_with("https://") || address.starts_with("http://");
    }

    std::string readGuide()
    {
        const auto data
            = Glib::wrap(g_resources_lookup_data(guidePath, G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr));
        gsize size = 0;
        const auto* text = data ? data->get_data(size) : nullptr;
        return { static_cast<const char*>(text), size };
    }

} // namespace

HelpWindowWebKit::HelpWindowWebKit(Gtk::Window* parent)
    : m_builder(Gtk::Builder::create_from_resource("/com/orvendal/quillox/help-window.ui"))
{
    refuseInspector(m_window);
    m_window.set_title(helpPages::setupGuideTitle);
    m_window.set_default_size(width, height);
    m_window.set_child(get<Gtk::Widget>("content"));
    if (parent)
        m_window.set_transient_for(*parent);
    get<Gtk::Label>("title").set_text(helpPages::setupGuideHeading);
    get<Gtk::Button>("close").set_label(helpPages::closeTitle);
    get<Gtk::Button>("close").signal_clicked().connect([this] { m_window.close(); });
    m_window.signal_close_request().connect(
        [this] {
            m_window.set_visible(false);
            if (onClosed)
                onClosed();
            return true;
        },
        false);
    makeView();
    connectKeys();
}

HelpWindowWebKit::~HelpWindowWebKit()
{
    g_signal_handlers_disconnect_by_data(m_view, this);
}

void HelpWindowWebKit::makeView()
{
    const GObjectOwner<WebKitWebContext> context(webkit_web_context_new());
    const GObjectOwner<WebKitNetworkSession> session(webkit_network_session_new_ephemeral());
    m_view = WEBKIT_WEB_VIEW(g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", context.get(),
        "network-session", session.get(), nullptr));
    auto* settings = webkit_web_view_get_settings(m_view);
    restrictSettings(settings);
    webkit_settings_set_enable_javascript(settings, FALSE);
    closeInputWays(m_view);
    refuseEverythingElse(m_view);
    constexpr GdkRGBA transparent { 0, 0, 0,
        0 }; // The window's own colour until the page is there.
    webkit_web_view_set_background_color(m_view, &transparent);
    g_signal_connect(m_view, "decide-policy",
        G_CALLBACK(+[](WebKitWebView*, WebKitPolicyDecision* decision,
                        WebKitPolicyDecisionType type, gpointer self) {
            return static_cast<HelpWindowWebKit*>(self)->decide(decision, type);
        }),
        this);
    g_signal_connect(m_view, "context-menu", G_CALLBACK(+[]() -> gboolean { return TRUE; }), this);
    g_signal_connect(m_view, "web-process-terminated",
        G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
            static_cast<HelpWindowWebKit*>(self)->m_window.close();
        }),
        this);
    auto* widget = Glib::wrap(GTK_WIDGET(m_view));
    widget->set_vexpand(true);
    get<Gtk::Box>("content").append(*widget);
}

void HelpWindowWebKit::load(const std::string& anchor)
{
    const auto address = helpPages::setupGuide + (anchor.empty() ? "" : "#" + anchor);
    webkit_web_view_load_html(m_view, readGuide().c_str(), address.c_str());
    gtk_widget_grab_focus(GTK_WIDGET(m_view));
}

gboolean HelpWindowWebKit::decide(WebKitPolicyDecision* decision, WebKitPolicyDecisionType type)
{
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE)
        return FALSE;
    auto* action = webkit_navigation_policy_decision_get_navigation_action(
        WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    const std::string address
        = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    if (type == WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION
        && pageOf(address) == helpPages::setupGuide) {
        webkit_policy_decision_use(decision);
        return TRUE;
    }
    webkit_policy_decision_ignore(decision);
    if (isWebAddress(address) && onLink)
        onLink(address);
    return TRUE;
}

/// Ahead of the page: the engine has keys that open something of the toolkit, or end the program.
void HelpWindowWebKit::connectKeys()
{
    auto* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect(keys, "key-pressed",
        G_CALLBACK(+[](GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers,
                        gpointer self) -> gboolean {
            return static_cast<HelpWindowWebKit*>(self)->handleKey(key, modifiers);
        }),
        this);
    gtk_widget_add_controller(GTK_WIDGET(m_window.gobj()), keys);
}

bool HelpWindowWebKit::handleKey(guint key, GdkModifierType modifiers)
{
    const auto held = modifiers & gtk_accelerator_get_default_mod_mask() & ~GDK_SHIFT_MASK;
    if (held == GDK_CONTROL_MASK)
        return handleCommand(gdk_keyval_to_lower(key));
    if (held != 0)
        return true;
    if (key == GDK_KEY_Escape)
        m_window.close();
    return std::ranges::find(readingKeys, static_cast<int>(key)) == readingKeys.end();
}

bool HelpWindowWebKit::handleCommand(guint key)
{
    switch (key) {
    case GDK_KEY_a:
    case GDK_KEY_c:
        return false; // What the guide says to type can be copied.
    case GDK_KEY_w:
        m_window.close();
        break;
    case GDK_KEY_plus:
    case GDK_KEY_equal:
    case GDK_KEY_KP_Add:
        zoom(zoomStep);
        break;
    case GDK_KEY_minus:
    case GDK_KEY_KP_Subtract:
        zoom(1 / zoomStep);
        break;
    case GDK_KEY_0:
    case GDK_KEY_KP_0:
        webkit_web_view_set_zoom_level(m_view, 1);
        break;
    default:
        break;
    }
    return true;
}

void HelpWindowWebKit::zoom(double factor)
{
    webkit_web_view_set_zoom_level(
        m_view, std::clamp(webkit_web_view_get_zoom_level(m_view) * factor, leastZoom, mostZoom));
}

} // namespace quillox
