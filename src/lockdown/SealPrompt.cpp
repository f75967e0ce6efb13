#include "lockdown/SealPrompt.h"

#include <utility>

namespace quillox {

SealPrompt::SealPrompt(Question question, RunLoop& runLoop)
    : m_question(std::move(question))
    , m_runLoop(runLoop)
{
}

AccentTextField SealPrompt::field()
{
    AccentTextField field;
    field.text = { [this] { return password.get(); },
        [this](const std::string& text) { type(text); } };
    field.isSecure = true;
    field.onSubmit = [this] { submit(); };
    field.autofocus = true;
    field.accessibleName = fieldLabel;
    return field;
}

void SealPrompt::type(const std::string& text)
{
    password.set(text);
    resetIdleTimer();
}

void SealPrompt::submit()
{
    if (m_question.validate(password.get())) {
        const auto succeed = m_question.onSuccess;
        succeed();
        return;
    }
    wrong.set(true);
    if (!password.get().empty())
        type("");
}

void SealPrompt::cancel()
{
    m_idleTimer.reset();
    const auto cancelled = m_question.onCancel;
    cancelled();
}

void SealPrompt::resetIdleTimer()
{
    m_idleTimer = m_runLoop.after(idleTimeout, [this] { cancel(); });
}

} // namespace quillox
