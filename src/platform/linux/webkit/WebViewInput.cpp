#include "platform/linux/webkit/WebViewInput.h"

#include "platform/linux/system/GlibOwner.h"

namespace quillox {

namespace {

    bool isForNobody(GdkEvent* event)
    {
        switch (gdk_event_get_event_type(event)) {
        case GDK_BUTTON_PRESS:
        case GDK_BUTTON_RELEASE:
            return gdk_button_event_get_button(event) == GDK_BUTTON_MIDDLE;
        case GDK_TOUCHPAD_PINCH:
        case GDK_TOUCHPAD_SWIPE:
            return true;
        default:
            return false;
        }
    }

    void addInputFilter(GtkWidget* view)
    {
        auto* filter = gtk_event_controller_legacy_new();
        gtk_event_controller_set_propagation_phase(filter, GTK_PHASE_CAPTURE);
        g_signal_connect(filter, "event",
            G_CALLBACK(+[](GtkEventController*, GdkEvent* event, gpointer) -> gboolean {
                return isForNobody(event);
            }),
            nullptr);
        gtk_widget_add_controller(view, filter);
    }

    gboolean acceptOwnDrag(GtkDropTargetAsync* target, GdkDrop* drop, gpointer engineHandler)
    {
        const auto handler = GPOINTER_TO_SIZE(engineHandler);
        gboolean isAccepted = FALSE;
        if (!gdk_drop_get_drag(drop)) // Another program's.
            return FALSE;
        g_signal_handler_unblock(target, handler);
        g_signal_emit_by_name(target, "accept", drop, &isAccepted);
        g_signal_handler_block(target, handler);
        return isAccepted;
    }

    /// The first answer counts, and the engine's comes first: it takes everything. So it is asked
    /// only after ours. With an engine that works otherwise nothing can be dropped.
    void refuseForeignDrops(GtkWidget* view, GtkEventController* target)
    {
        const auto engineHandler = g_signal_handler_find(target, G_SIGNAL_MATCH_ID,
            g_signal_lookup("accept", GTK_TYPE_DROP_TARGET_ASYNC), 0, nullptr, nullptr, nullptr);
        if (!engineHandler)
            return gtk_widget_remove_controller(view, target);
        g_signal_handler_block(target, engineHandler);
        g_signal_connect(
            target, "accept", G_CALLBACK(acceptOwnDrag), GSIZE_TO_POINTER(engineHandler));
    }

    void guardDropTargets(GtkWidget* view)
    {
        const GObjectOwner<GListModel> controllers(gtk_widget_observe_controllers(view));
        for (guint index = g_list_model_get_n_items(controllers.get()); index-- > 0;) {
            const GObjectOwner<GtkEventController> controller(
                GTK_EVENT_CONTROLLER(g_list_model_get_item(controllers.get(), index)));
            if (GTK_IS_DROP_TARGET_ASYNC(controller.get()))
                refuseForeignDrops(view, controller.get());
            else if (GTK_IS_DROP_TARGET(controller.get()))
                gtk_widget_remove_controller(view, controller.get());
        }
    }

} // namespace

void closeInputWays(WebKitWebView* view)
{
    addInputFilter(GTK_WIDGET(view));
    guardDropTargets(GTK_WIDGET(view));
}

} // namespace quillox
