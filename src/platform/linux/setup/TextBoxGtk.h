#pragma once

#include "platform/linux/gtk/AccentTextFieldGtk.h"

#include <functional>
#include <gtkmm/box.h>
#include <memory>

namespace quillox {

/// A flat box with a text field in it, in the text colour of its place in the style sheet. A click
/// anywhere in the box goes to the field.
class TextBoxGtk final {
public:
    using Describe = std::function<AccentTextField()>;

    /// The field becomes the first thing in the box.
    TextBoxGtk(Gtk::Box&, Describe, RunLoop&);

    /// Follows the text that the field is bound to.
    void update();

    /// Makes the field anew, for what a field never changes; keyboard and caret stay where they
    /// are.
    void remake();

    void focus() { m_field->focus(); }
    bool isFocused() const { return m_field->isFocused(); }

private:
    void makeField();

    Gtk::Box& m_box;
    Describe m_describe;
    RunLoop& m_runLoop;
    std::unique_ptr<AccentTextFieldGtk> m_field;
};

} // namespace quillox
