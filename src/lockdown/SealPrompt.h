#pragma once

#include "ports/AccentTextField.h"
#include "ports/RunLoop.h"
#include "support/Published.h"

#include <functional>
#include <string>

namespace quillox {

/// Asks for the exit password, before a run ends and, in setup, before one begins. Whoever made it
/// takes it away in either ending, which may happen within the two callbacks. Main thread only.
class SealPrompt {
public:
    struct Question {
        std::string title;
        std::string message;
        std::function<bool(const std::string&)> validate;
        std::function<void()> onSuccess;
        std::function<void()> onCancel; ///< Also after ten seconds without typing.
        std::string confirmLabel = "⏎ CONFIRM";
    };

    static constexpr double width = 320; ///< Points, padding included.
    static constexpr double padding = 24; ///< Points on all sides.
    static constexpr double borderWidth = 2; ///< Points, around the field.
    static constexpr Color borderColor = Color::black();
    static constexpr Color wrongBorderColor { 1, 0, 0, 1 };
    static constexpr std::chrono::seconds idleTimeout { 10 };
    static constexpr auto fieldLabel = "EXIT PASSWORD";
    static constexpr auto cancelLabel = "ESC CANCEL";

    SealPrompt(Question question, RunLoop& runLoop);

    const Question& question() const { return m_question; }

    Published<std::string> password;
    Published<bool> wrong { false }; ///< From the first refused attempt on.

    /// The field that edits `password`, with the keyboard as soon as it shows.
    AccentTextField field();

    /// Call when the prompt is shown; it cancels itself ten seconds after the last keystroke.
    void appear() { resetIdleTimer(); }
    void submit();
    void cancel();

private:
    void type(const std::string&);
    void resetIdleTimer();

    Question m_question;
    RunLoop& m_runLoop;
    Handle m_idleTimer;
};

} // namespace quillox
