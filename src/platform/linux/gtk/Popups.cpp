#include "platform/linux/gtk/Popups.h"

#include "platform/linux/system/GlibOwner.h"

namespace quillox {

void closePopups(GtkWidget* owner)
{
    auto* child = gtk_widget_get_first_child(owner);
    while (child) {
        // The owner may destroy its popup once that is closed.
        const GObjectOwner<GtkWidget> held(GTK_WIDGET(g_object_ref(child)));
        child = gtk_widget_get_next_sibling(child);
        if (GTK_IS_POPOVER(held.get()))
            gtk_popover_popdown(GTK_POPOVER(held.get()));
    }
}

} // namespace quillox
