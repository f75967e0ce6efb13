#pragma once

#include "support/Geometry.h"

#include <functional>
#include <string>

namespace quillox {

enum class TextAlignment { Left, Center, Right };

struct Font {
    double size = 14; ///< In points.
    int weight = 400; ///< 100 to 900.
    bool isMonospaced = false;

    bool operator==(const Font&) const = default;
};

/// The two ends of a text that a field edits.
struct TextBinding {
    std::function<std::string()> get;
    std::function<void(const std::string&)> set;
};

/// What a key asks of a text field beside typing.
enum class TextCommand { InsertNewline, InsertTab, CancelOperation, Other };

/// The one text-entry control of every screen: bare of border, background and focus ring, so that
/// screens draw their own boxes around it. A value that describes the control; the platform makes
/// and updates the field itself. Main thread only.
struct AccentTextField {
    static constexpr Color systemRed { 1, 0.231, 0.188 };

    TextBinding text;
    bool isSecure = false; ///< Read when the field is made, like the font, colours and alignment.
    std::string placeholder;
    Color textColor = Color::black();
    Font font {};
    TextAlignment alignment = TextAlignment::Left;
    std::function<void()> onSubmit; ///< When Return is pressed; may be empty.
    bool autofocus = false; ///< Takes the keyboard once the field is on the screen.
    Color caretColor = systemRed; ///< Of the insertion point and behind selected text.
    std::string accessibleName;

    class Coordinator;
};

/// Stands between a field of the platform and the description that it was made from.
class AccentTextField::Coordinator {
public:
    explicit Coordinator(AccentTextField field)
        : m_field(std::move(field))
    {
    }

    const AccentTextField& field() const { return m_field; }
    void update(AccentTextField field) { m_field = std::move(field); }

    /// The text to put into a field that shows `current`; an equal one is left alone, so that the
    /// caret stays where it is.
    bool needsReplacement(const std::string& current) const
    {
        return m_field.text.get && m_field.text.get() != current;
    }

    /// Call on every change that the user makes.
    void textDidChange(const std::string& text) const
    {
        if (const auto set = m_field.text.set)
            set(text);
    }

    /// Whether the field must do nothing more about the command.
    bool doCommand(TextCommand command) const
    {
        if (command != TextCommand::InsertNewline)
            return false;
        // It may do away with the field and with this.
        if (const auto submit = m_field.onSubmit)
            submit();
        return true;
    }

private:
    AccentTextField m_field;
};

} // namespace quillox
