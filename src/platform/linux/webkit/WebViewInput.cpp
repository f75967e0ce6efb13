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

    constexpr auto finishedMark = "quillox-finished";

    void finish(GdkDrag* drag)
    {
        if (g_object_get_data(G_OBJECT(drag), finishedMark))
            return;
        g_signal_emit_by_name(drag, "dnd-finished");
        gdk_drag_drop_done(drag, TRUE);
    }

    void finishSoon(GdkDrag* drag)
    {
        constexpr guint patience = 100; // Milliseconds.
        g_timeout_add_full(
            G_PRIORITY_DEFAULT, patience,
            [](gpointer kept) -> gboolean {
                finish(GDK_DRAG(kept));
                return G_SOURCE_REMOVE;
            },
            g_object_ref(drag), g_object_unref);
    }

    /// The engine may fail to tell the toolkit that a drop is done: the page would never learn that
    /// its drag has ended, and the picture of what was dragged would stay.
    void seeToItsEnd(GdkDrag* drag)
    {
        constexpr auto mark = "quillox-seen";
        if (g_object_get_data(G_OBJECT(drag), mark))
            return;
        g_object_set_data(G_OBJECT(drag), mark, drag);
        g_signal_connect(drag, "drop-performed", G_CALLBACK(finishSoon), nullptr);
        g_signal_connect(drag, "dnd-finished", G_CALLBACK(+[](GdkDrag* finished, gpointer) {
            g_object_set_data(G_OBJECT(finished), finishedMark, finished);
        }),
            nullptr);
    }

    gboolean acceptOwnDrag(GtkDropTargetAsync* target, GdkDrop* drop, gpointer engineHandler)
    {
        const auto handler = GPOINTER_TO_SIZE(engineHandler);
        gboolean isAccepted = FALSE;
        auto* drag = gdk_drop_get_drag(drop);
        if (!drag) // Another program's.
            return FALSE;
        seeToItsEnd(drag);
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

    /// The engine keeps a hidden text widget to look key bindings up in. When Tab runs off the end
    /// of the page the keyboard would go there, and no key would reach the page again.
    void keepKeyboardInPage(GtkWidget* view)
    {
        for (auto* child = gtk_widget_get_first_child(view); child;
             child = gtk_widget_get_next_sibling(child))
            gtk_widget_set_can_focus(child, FALSE);
    }

} // namespace

void closeInputWays(WebKitWebView* view)
{
    keepKeyboardInPage(GTK_WIDGET(view));
    addInputFilter(GTK_WIDGET(view));
    guardDropTargets(GTK_WIDGET(view));
}

} // namespace quillox
