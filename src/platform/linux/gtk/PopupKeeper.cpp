#include "platform/linux/gtk/PopupKeeper.h"

#include "platform/linux/system/GlibOwner.h"

namespace quillox {

namespace {

    constexpr auto rootMark = "quillox-root";

    bool isOpen(GtkWidget* window)
    {
        auto* windows = gtk_window_get_toplevels();
        for (guint index = 0; index < g_list_model_get_n_items(windows); ++index) {
            const GObjectOwner<GtkWidget> open(GTK_WIDGET(g_list_model_get_item(windows, index)));
            if (open.get() == window)
                return true;
        }
        return false;
    }

    /// The toolkit finds what a popup keeps to itself by its window only: it is put back there,
    /// where nothing shows, for as long as it takes to close it.
    void closeOrphan(GtkWidget* popup)
    {
        auto* root = static_cast<GtkWidget*>(g_object_get_data(G_OBJECT(popup), rootMark));
        if (!root || !isOpen(root))
            return;
        auto* shelter = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
        gtk_widget_set_visible(shelter, FALSE);
        gtk_widget_set_parent(shelter, root);
        gtk_widget_set_parent(popup, shelter);
        gtk_widget_set_visible(popup, FALSE);
        gtk_widget_unparent(popup);
        gtk_widget_unparent(shelter);
    }

    void close(GtkWidget* popup)
    {
        if (!gtk_widget_get_visible(popup))
            return;
        if (gtk_widget_get_parent(popup))
            gtk_widget_set_visible(popup, FALSE);
        else
            closeOrphan(popup);
    }

    void closeSoon(GtkWidget* popup)
    {
        // Not from within what the toolkit does with it just now; ahead of the next input.
        g_idle_add_full(
            G_PRIORITY_HIGH,
            [](gpointer kept) -> gboolean {
                close(GTK_WIDGET(kept));
                return G_SOURCE_REMOVE;
            },
            g_object_ref(popup), g_object_unref);
    }

    void handleParentChange(GtkWidget* popup)
    {
        if (!gtk_widget_get_parent(popup) && gtk_widget_get_visible(popup))
            closeSoon(popup);
    }

    void keep(GtkWidget* popup)
    {
        auto* parent = gtk_widget_get_parent(popup);
        if (parent && !gtk_widget_get_can_focus(parent))
            closeSoon(popup);
        if (!g_object_get_data(G_OBJECT(popup), rootMark))
            g_signal_connect(popup, "notify::parent", G_CALLBACK(handleParentChange), nullptr);
        g_object_set_data(G_OBJECT(popup), rootMark, gtk_widget_get_root(popup));
    }

} // namespace

PopupKeeper::PopupKeeper()
{
    g_type_class_unref(g_type_class_ref(GTK_TYPE_POPOVER));
    m_hook = g_signal_add_emission_hook(
        g_signal_lookup("map", GTK_TYPE_WIDGET), 0,
        [](GSignalInvocationHint*, guint, const GValue* values, gpointer) -> gboolean {
            auto* widget = GTK_WIDGET(g_value_get_object(values));
            if (GTK_IS_POPOVER(widget))
                keep(widget);
            return TRUE;
        },
        nullptr, nullptr);
}

PopupKeeper::~PopupKeeper()
{
    g_signal_remove_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), m_hook);
}

} // namespace quillox
