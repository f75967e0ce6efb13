#pragma once

#include "platform/linux/gtk/WidgetStyle.h"
#include "platform/linux/system/GlibOwner.h"
#include "ports/AccentTextField.h"
#include "ports/RunLoop.h"

#include <gtkmm/widget.h>

namespace quillox {

/// The field that an `AccentTextField` describes: bare text on one line, which scrolls sideways.
///
/// A secure field opens nothing of the toolkit's, whatever is done to it, and gives its text to no
/// clipboard: it stands over sealed pages. No pointer reaches it; whoever draws the box around it
/// calls `focus` when that is clicked.
class AccentTextFieldGtk final {
public:
    /// Where the text gets its colour from: the description, or the place of the field in the style
    /// sheet, whose text it then looks like in light and dark.
    enum class TextColor { Described, Inherited };

    AccentTextFieldGtk(AccentTextField, RunLoop&, TextColor = TextColor::Described);
    ~AccentTextFieldGtk();
    AccentTextFieldGtk(const AccentTextFieldGtk&) = delete;
    AccentTextFieldGtk& operator=(const AccentTextFieldGtk&) = delete;

    /// Without this object it is a field that tells nobody.
    Gtk::Widget& widget() { return *Glib::wrap(m_widget.get()); }

    /// Only text and placeholder follow a new description; the rest needs a new field.
    void update(AccentTextField);

    /// Takes the keyboard, with nothing selected, if it is in a window.
    void focus();
    bool isFocused() const;

private:
    void applyLook(const AccentTextField&, TextColor);
    void makeSecure();
    void connect();
    void showText();

    GtkText* text() const { return GTK_TEXT(m_widget.get()); }
    GtkEditable* editable() const { return GTK_EDITABLE(m_widget.get()); }

    AccentTextField::Coordinator m_coordinator;
    GObjectOwner<GtkWidget> m_widget;
    WidgetStyle m_style;
    Handle m_autofocus;
    bool m_isReplacing = false;
};

} // namespace quillox
