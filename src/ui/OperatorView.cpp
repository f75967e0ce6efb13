#include "ui/OperatorView.h"

#include "app/AppState.h"
#include "ports/Workspace.h"
#include "support/CanonicalText.h"
#include "ui/HelpPages.h"

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr auto releaseCheckInterval = 50ms;
    constexpr int lastReleaseCheck = 200;

} // namespace

OperatorView::OperatorView(AppState& app, Machine machine, std::string appVersion)
    : m_app(app)
    , m_runLoop(machine.gesture.runLoop)
    , m_usage(machine.usage)
    , m_workspace(machine.workspace)
    , m_form(app, machine.form, std::move(appVersion))
    , m_armer(machine.gesture)
{
    m_armer.onComplete = [this] { holdCompleted(); };
    m_observations.push_back(m_app.isKioskActive.observe([this](bool) { handleActiveChanged(); }));
    m_observations.push_back(
        m_app.autoStartCountdown.observe([this](const auto&) { updateArmer(); }));
}

void OperatorView::appear()
{
    m_isThere = true;
    m_form.appear();
    updateArmer();
}

void OperatorView::disappear()
{
    m_isThere = false;
    m_form.disappear();
    m_releaseCheck.reset();
    m_waitingForRelease.set(false);
    closeStats();
    if (m_prompt)
        dismissPrompt();
    updateArmer();
}

bool OperatorView::isPasswordRequired() const
{
    return m_app.settings.get().requireExitPassword && !m_form.exitPasswordWarn();
}

bool OperatorView::isEnabled() const
{
    return !m_app.isKioskActive.get() && !m_app.autoStartCountdown.get()
        && !m_showLaunchPassword.get() && !m_showStats.get();
}

SealBar OperatorView::sealAction() const
{
    if (!m_app.hasSource())
        return { "ADD A SOURCE TO SEAL" };
    if (m_form.exitPasswordWarn())
        return { "SET AN EXIT PASSWORD TO SEAL" };
    if (const double progress = m_armer.progress.get(); progress > 0)
        return { "SEALING IN PROGRESS", progress };
    return { "HOLD ⌘⇧S TO SEAL" };
}

std::string_view OperatorView::missing() const
{
    if (!m_app.hasSource())
        return "SET A URL OR FOLDER FIRST";
    if (m_form.exitPasswordWarn())
        return "SET AN EXIT PASSWORD FIRST";
    return "";
}

SealHintOverlay OperatorView::hintBanner() const
{
    const auto first = missing();
    const bool isHeld = m_armer.progress.get() > SealHoldOverlay::shownAbove;
    return { std::string(first), !first.empty() && isHeld };
}

SealHoldOverlay OperatorView::holdBanner() const
{
    if (isWaitingForRelease())
        return { "SEALING IN PROGRESS", 1 };
    return { "SEALING IN PROGRESS", missing().empty() ? m_armer.progress.get() : 0 };
}

void OperatorView::updateArmer()
{
    if (m_isThere && isEnabled())
        m_armer.start();
    else
        m_armer.stop();
}

void OperatorView::rearm()
{
    m_armer.stop();
    updateArmer();
}

void OperatorView::holdCompleted()
{
    if (!missing().empty()) {
        rearm();
    } else if (isPasswordRequired()) {
        askForPassword();
    } else {
        m_waitingForRelease.set(true);
        launchWhenKeysReleased(0);
    }
}

/// Keeps the S that is still held from reaching the page.
void OperatorView::launchWhenKeysReleased(int attempt)
{
    if (!m_armer.isSUp() && attempt < lastReleaseCheck) {
        m_releaseCheck = m_runLoop.after(
            releaseCheckInterval, [this, attempt] { launchWhenKeysReleased(attempt + 1); });
        return;
    }
    m_waitingForRelease.set(false);
    m_app.launchKiosk();
    rearm();
}

void OperatorView::askForPassword()
{
    m_prompt = std::make_unique<SealPrompt>(
        SealPrompt::Question {
            .title = "SEAL WEBSITE",
            .message = "Enter the exit password to start kiosk mode",
            .validate =
                [this](const std::string& text) {
                    return areCanonicallyEquivalent(text, m_app.settings.get().exitPassword);
                },
            .onSuccess =
                [this] {
                    dismissPrompt();
                    m_app.launchKiosk();
                    rearm();
                },
            .onCancel = [this] { dismissPrompt(); },
            .confirmLabel = "SEAL IT",
        },
        m_runLoop);
    m_showLaunchPassword.set(true);
    updateArmer();
    m_prompt->appear();
}

void OperatorView::dismissPrompt()
{
    m_showLaunchPassword.set(false); // Whoever shows the prompt lets go of it now.
    m_prompt.reset();
    updateArmer();
}

void OperatorView::openStats()
{
    if (!isEnabled())
        return;
    m_stats.emplace(m_usage);
    m_showStats.set(true);
    updateArmer();
}

void OperatorView::closeStats()
{
    if (!m_stats)
        return;
    m_showStats.set(false); // Whoever shows the sheet lets go of it now.
    m_stats.reset();
    updateArmer();
}

void OperatorView::handleActiveChanged()
{
    if (m_app.isKioskActive.get()) {
        closeStats();
        if (m_prompt)
            dismissPrompt();
    }
    updateArmer();
}

void OperatorView::openSetupGuide()
{
    m_workspace.open(helpPages::setupGuide);
}

void OperatorView::openWebSite()
{
    m_workspace.open(helpPages::webSite);
}

std::vector<Handle> OperatorView::observe(const std::function<void()>& onChange)
{
    const auto tell = [&onChange](auto& published) {
        return published.observe([onChange](const auto&) { onChange(); });
    };
    std::vector<Handle> handles;
    handles.push_back(tell(m_app.settings));
    handles.push_back(tell(m_app.isKioskActive));
    handles.push_back(tell(m_app.autoStartCountdown));
    handles.push_back(tell(m_showLaunchPassword));
    handles.push_back(tell(m_showStats));
    return handles;
}

std::vector<Handle> OperatorView::observeGesture(const std::function<void()>& onChange)
{
    std::vector<Handle> handles;
    handles.push_back(m_armer.progress.observe([onChange](double) { onChange(); }));
    handles.push_back(m_waitingForRelease.observe([onChange](bool) { onChange(); }));
    return handles;
}

} // namespace quillox
