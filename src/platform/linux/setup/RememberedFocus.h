#pragma once

#include <gtkmm/window.h>

namespace quillox {

/// Where the keyboard was in a window before something was laid over it.
class RememberedFocus final {
public:
    RememberedFocus() { g_weak_ref_init(&m_widget, nullptr); }
    ~RememberedFocus() { g_weak_ref_clear(&m_widget); }
    RememberedFocus(const RememberedFocus&) = delete;
    RememberedFocus& operator=(const RememberedFocus&) = delete;

    /// Takes the keyboard from whatever has it.
    void take(Gtk::Window& window)
    {
        g_weak_ref_set(&m_widget, gtk_window_get_focus(window.gobj()));
        window.unset_focus();
    }

    /// Gives it back, unless that widget is gone or cannot have it now. Works once.
    void giveBack()
    {
        auto* widget = static_cast<GtkWidget*>(g_weak_ref_get(&m_widget));
        if (!widget)
            return;
        if (gtk_widget_get_mapped(widget) && gtk_widget_is_sensitive(widget))
            grabFocus(widget);
        g_weak_ref_set(&m_widget, nullptr);
        g_object_unref(widget);
    }

private:
    /// Selects nothing in a text: the next key must not replace it.
    static void grabFocus(GtkWidget* widget)
    {
        if (GTK_IS_TEXT(widget))
            gtk_text_grab_focus_without_selecting(GTK_TEXT(widget));
        else
            gtk_widget_grab_focus(widget);
    }

    GWeakRef m_widget;
};

} // namespace quillox
