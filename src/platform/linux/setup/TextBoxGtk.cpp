#include "platform/linux/setup/TextBoxGtk.h"

#include <gtkmm/gestureclick.h>

namespace quillox {

namespace {

    constexpr double fontSize = 16;

    GtkEditable* editable(AccentTextFieldGtk& field)
    {
        return GTK_EDITABLE(field.widget().gobj());
    }

} // namespace

TextBoxGtk::TextBoxGtk(Gtk::Box& box, Describe describe, RunLoop& runLoop)
    : m_box(box)
    , m_describe(std::move(describe))
    , m_runLoop(runLoop)
{
    makeField();
    auto click = Gtk::GestureClick::create();
    click->signal_pressed().connect([this](int, double, double) { focus(); });
    m_box.add_controller(click);
}

void TextBoxGtk::makeField()
{
    auto description = m_describe();
    description.font.size = fontSize;
    m_field = std::make_unique<AccentTextFieldGtk>(
        std::move(description), m_runLoop, AccentTextFieldGtk::TextColor::Inherited);
    m_box.prepend(m_field->widget());
}

void TextBoxGtk::update()
{
    m_field->update(m_describe());
}

void TextBoxGtk::remake()
{
    const bool wasFocused = isFocused();
    const int caret = gtk_editable_get_position(editable(*m_field));
    const auto old = std::move(m_field);
    makeField();
    if (wasFocused)
        focus();
    gtk_editable_set_position(editable(*m_field), caret);
    m_box.remove(old->widget());
}

} // namespace quillox
