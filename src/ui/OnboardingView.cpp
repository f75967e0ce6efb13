#include "ui/OnboardingView.h"

#include "app/AppState.h"
#include "ports/AccessibilityTrust.h"
#include "ports/Workspace.h"
#include "ui/HelpPages.h"

namespace quillox {

OnboardingView::OnboardingView(AppState& app, Machine machine)
    : m_app(app)
    , m_runLoop(machine.gesture.runLoop)
    , m_accessibility(machine.accessibility)
    , m_workspace(machine.workspace)
    , m_trusted(machine.accessibility.isProcessTrusted())
    , m_practiceArmer(machine.gesture)
{
    m_practiceArmer.onComplete = [this] { m_practiced.set(true); };
}

void OnboardingView::appear()
{
    m_isThere = true;
    m_practiced.set(false);
    m_trusted.set(m_accessibility.isProcessTrusted());
    m_poll = m_runLoop.every(pollInterval, [this] {
        const bool isTrusted = m_accessibility.isProcessTrusted();
        if (isTrusted != m_trusted.get())
            m_trusted.set(isTrusted);
    });
    show(welcome);
}

void OnboardingView::disappear()
{
    m_isThere = false;
    m_poll.reset();
    updateArmer();
}

void OnboardingView::show(int step)
{
    m_step.set(step);
    updateArmer();
}

void OnboardingView::updateArmer()
{
    m_practiceArmer.stop();
    if (m_isThere && step() == sealGesture)
        m_practiceArmer.start();
}

SealBar OnboardingView::practiceBar() const
{
    if (hasPracticed())
        return { "✓ SEALED - YOU'VE GOT IT", 1 };
    return { "TRY IT NOW - HOLD", m_practiceArmer.progress.get() };
}

bool OnboardingView::blockedOnSource() const
{
    return step() == firstKiosk && !m_app.hasSource();
}

void OnboardingView::goBack()
{
    if (showsBack())
        show(step() - 1);
}

void OnboardingView::setUpLater()
{
    if (showsSetUpLater())
        show(step() + 1);
}

void OnboardingView::goOn()
{
    if (!isPrimaryEnabled())
        return;
    if (step() == lastStep)
        m_app.completeOnboarding();
    else
        show(step() + 1);
}

void OnboardingView::openSystemSettings()
{
    m_workspace.open(AppState::accessibilitySettings);
}

void OnboardingView::openSetupGuide()
{
    m_workspace.open(helpPages::setupGuide);
}

void OnboardingView::relaunch()
{
    m_workspace.relaunch();
}

AccentTextField OnboardingView::urlField()
{
    return {
        .text = { [this] { return m_app.settings.get().url; },
            [this](const std::string& text) {
                m_app.settings.update([&](KioskSettings& settings) { settings.url = text; });
            } },
        .placeholder = "https://…",
        .onSubmit = [this] { goOn(); },
        .accessibleName = "Website address",
    };
}

std::vector<Handle> OnboardingView::observe(const std::function<void()>& onChange)
{
    const auto tell = [&onChange](auto& published) {
        return published.observe([onChange](const auto&) { onChange(); });
    };
    std::vector<Handle> handles;
    handles.push_back(tell(m_step));
    handles.push_back(tell(m_trusted));
    handles.push_back(tell(m_practiced));
    handles.push_back(tell(m_practiceArmer.progress));
    handles.push_back(tell(m_app.settings));
    return handles;
}

} // namespace quillox
