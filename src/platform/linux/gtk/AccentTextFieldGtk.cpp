#include "platform/linux/gtk/AccentTextFieldGtk.h"

#include <fmt/format.h>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr auto autofocusDelay = 250ms;
    constexpr gunichar bullet = 0x2022;

    /// Ours are 1/96 of an inch. The toolkit's follow the size of text that the user has chosen.
    constexpr double toolkitPoints = 0.75;

    float positionFor(TextAlignment alignment)
    {
        switch (alignment) {
        case TextAlignment::Left:
            return 0;
        case TextAlignment::Center:
            return 0.5;
        case TextAlignment::Right:
            return 1;
        }
        return 0;
    }

    void refuse(gpointer widget, const char* signal)
    {
        g_signal_connect(widget, signal, G_CALLBACK(+[](GtkWidget* asked, gpointer name) {
            g_signal_stop_emission_by_name(asked, static_cast<const char*>(name));
        }),
            const_cast<char*>(signal));
    }

} // namespace

AccentTextFieldGtk::AccentTextFieldGtk(AccentTextField field, RunLoop& runLoop, TextColor color)
    : m_coordinator(std::move(field))
    , m_widget(GTK_WIDGET(g_object_ref_sink(g_object_new(
          // On its own it has none, and screen readers would not see it.
          GTK_TYPE_TEXT, "accessible-role", GTK_ACCESSIBLE_ROLE_TEXT_BOX, nullptr))))
    , m_style(widget())
{
    const auto& described = m_coordinator.field();
    if (described.isSecure)
        makeSecure();
    applyLook(described, color);
    showText();
    connect();
    if (described.autofocus)
        m_autofocus = runLoop.after(autofocusDelay, [this] { focus(); });
}

AccentTextFieldGtk::~AccentTextFieldGtk()
{
    g_signal_handlers_disconnect_by_data(m_widget.get(), this);
}

void AccentTextFieldGtk::applyLook(const AccentTextField& field, TextColor color)
{
    const auto caret = cssColor(field.caretColor);
    const auto text = color == TextColor::Inherited ? "inherit" : cssColor(field.textColor);
    m_style.set(fmt::format("text {{ background: none; border: none; outline: none; "
                            "box-shadow: none; min-height: 0; color: {0}; caret-color: {1}; "
                            "font-size: {2}pt; font-weight: {3}; {4} }}"
                            "text > selection {{ background-color: {1}; color: white; }}"
                            "text:not(:focus) > selection {{ background: none; color: inherit; }}",
        text, caret, field.font.size * toolkitPoints, field.font.weight,
        field.font.isMonospaced ? "font-family: monospace;" : ""));
    gtk_editable_set_alignment(editable(), positionFor(field.alignment));
    gtk_widget_set_hexpand(m_widget.get(), TRUE);
    gtk_accessible_update_property(GTK_ACCESSIBLE(m_widget.get()), GTK_ACCESSIBLE_PROPERTY_LABEL,
        field.accessibleName.c_str(), -1);
}

void AccentTextFieldGtk::makeSecure()
{
    // Kept out of swap space, and wiped.
    const GObjectOwner<GtkEntryBuffer> buffer(gtk_password_entry_buffer_new());
    gtk_text_set_buffer(text(), buffer.get());
    gtk_text_set_visibility(text(), FALSE);
    gtk_text_set_invisible_char(text(), bullet);
    gtk_text_set_input_purpose(text(), GTK_INPUT_PURPOSE_PASSWORD);
    gtk_text_set_input_hints(text(),
        static_cast<GtkInputHints>(
            GTK_INPUT_HINT_NO_SPELLCHECK | GTK_INPUT_HINT_NO_EMOJI | GTK_INPUT_HINT_PRIVATE));

    // Right button, long press, dragging, dropping and pasting with the middle button, at once.
    gtk_widget_set_can_target(m_widget.get(), FALSE);
    for (const auto* action : { "menu.popup", "misc.insert-emoji", "misc.toggle-visibility",
             "clipboard.cut", "clipboard.copy" })
        gtk_widget_action_set_enabled(m_widget.get(), action, FALSE);
    for (const auto* signal : { "insert-emoji", "cut-clipboard", "copy-clipboard" })
        refuse(m_widget.get(), signal);
}

void AccentTextFieldGtk::connect()
{
    g_signal_connect(m_widget.get(), "changed",
        G_CALLBACK(+[](GtkEditable* changed, AccentTextFieldGtk* self) {
            // Whoever is told may destroy the field.
            const std::string text = gtk_editable_get_text(changed);
            if (!self->m_isReplacing)
                self->m_coordinator.textDidChange(text);
        }),
        this);
    g_signal_connect(m_widget.get(), "activate",
        G_CALLBACK(+[](GtkText*, AccentTextFieldGtk* self) {
            self->m_coordinator.doCommand(TextCommand::InsertNewline);
        }),
        this);

    // With Super a key is a command, such as the seal gesture, and no letter.
    auto* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    g_signal_connect(keys, "key-pressed",
        G_CALLBACK(+[](GtkEventControllerKey*, guint, guint, GdkModifierType state,
                        gpointer) -> gboolean { return (state & GDK_SUPER_MASK) != 0; }),
        nullptr);
    gtk_widget_add_controller(m_widget.get(), keys);
}

void AccentTextFieldGtk::update(AccentTextField field)
{
    m_coordinator.update(std::move(field));
    showText();
}

void AccentTextFieldGtk::showText()
{
    const auto& field = m_coordinator.field();
    gtk_text_set_placeholder_text(text(), field.placeholder.c_str());
    if (!m_coordinator.needsReplacement(gtk_editable_get_text(editable())))
        return;
    m_isReplacing = true;
    gtk_editable_set_text(editable(), field.text.get().c_str());
    gtk_editable_set_position(editable(), -1);
    m_isReplacing = false;
}

void AccentTextFieldGtk::focus()
{
    if (gtk_widget_get_root(m_widget.get()) && !isFocused())
        gtk_text_grab_focus_without_selecting(text());
}

bool AccentTextFieldGtk::isFocused() const
{
    return gtk_widget_is_focus(m_widget.get());
}

} // namespace quillox
