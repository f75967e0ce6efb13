#include "platform/linux/webkit/WebViewSignals.h"

#include "platform/linux/system/GlibOwner.h"

#include <libsoup/soup.h>

namespace quillox {

namespace {

    gboolean answerScriptDialog(WebKitWebView*, WebKitScriptDialog* dialog, gpointer)
    {
        if (webkit_script_dialog_get_dialog_type(dialog)
            == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM)
            webkit_script_dialog_confirm_set_confirmed(dialog, TRUE);
        return TRUE;
    }

    gboolean cancelFileChooser(WebKitWebView*, WebKitFileChooserRequest* request, gpointer)
    {
        webkit_file_chooser_request_cancel(request);
        return TRUE;
    }

    gboolean cancelColorChooser(WebKitWebView*, WebKitColorChooserRequest* request, gpointer)
    {
        webkit_color_chooser_request_cancel(request);
        return TRUE;
    }

    gboolean denyPermission(WebKitWebView*, WebKitPermissionRequest* request, gpointer)
    {
        webkit_permission_request_deny(request);
        return TRUE;
    }

    gboolean withholdCredential(WebKitWebView*, WebKitAuthenticationRequest* request, gpointer)
    {
        webkit_authentication_request_authenticate(request, nullptr);
        return TRUE;
    }

    gboolean showNothing(WebKitWebView*, gpointer, gpointer)
    {
        return TRUE;
    }

    /// Scripts open lists too. A view that may not have the keyboard must not take it that way.
    gboolean refuseListWhileShutOut(
        WebKitWebView* view, WebKitOptionMenu* menu, GdkRectangle*, gpointer)
    {
        if (gtk_widget_get_can_focus(GTK_WIDGET(view)))
            return FALSE;
        webkit_option_menu_close(menu);
        return TRUE;
    }

    void removeTooltip(GtkWidget* view, GParamSpec*, gpointer)
    {
        if (gtk_widget_get_has_tooltip(view))
            gtk_widget_set_has_tooltip(view, FALSE);
    }

    struct HashTableUnref {
        void operator()(GHashTable* table) const { g_hash_table_unref(table); }
    };

} // namespace

bool isMeantToBeSaved(WebKitURIResponse* response)
{
    auto* headers = webkit_uri_response_get_http_headers(response);
    char* disposition = nullptr;
    GHashTable* parameters = nullptr;
    if (!headers
        || !soup_message_headers_get_content_disposition(headers, &disposition, &parameters))
        return false;
    const GTextOwner owner(disposition);
    const std::unique_ptr<GHashTable, HashTableUnref> parametersOwner(parameters);
    return g_ascii_strcasecmp(disposition, "inline") != 0;
}

void refuseEverythingElse(WebKitWebView* view)
{
    g_signal_connect(view, "script-dialog", G_CALLBACK(answerScriptDialog), nullptr);
    g_signal_connect(view, "run-file-chooser", G_CALLBACK(cancelFileChooser), nullptr);
    g_signal_connect(view, "run-color-chooser", G_CALLBACK(cancelColorChooser), nullptr);
    g_signal_connect(view, "permission-request", G_CALLBACK(denyPermission), nullptr);
    g_signal_connect(view, "authenticate", G_CALLBACK(withholdCredential), nullptr);
    g_signal_connect(view, "print", G_CALLBACK(showNothing), nullptr);
    g_signal_connect(view, "show-notification", G_CALLBACK(showNothing), nullptr);
    g_signal_connect(view, "show-option-menu", G_CALLBACK(refuseListWhileShutOut), nullptr);
    g_signal_connect(view, "notify::has-tooltip", G_CALLBACK(removeTooltip), nullptr);
}

} // namespace quillox
