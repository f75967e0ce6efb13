#include "ui/SetupView.h"

#include "app/AppState.h"
#include "support/CanonicalText.h"

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr auto releaseCheckInterval = 50ms;
    constexpr int lastReleaseCheck = 200;

} // namespace

SetupView::SetupView(AppState& state, LaunchArmer::Machine machine)
    : m_state(state)
    , m_runLoop(machine.runLoop)
    , m_armer(machine)
{
    m_armer.onComplete = [this] { holdCompleted(); };
    m_observations.push_back(
        m_state.isKioskActive.observe([this](bool) { handleActiveChanged(); }));
    m_observations.push_back(
        m_state.autoStartCountdown.observe([this](const auto&) { updateArmer(); }));
}

bool SetupView::isLocal() const
{
    return m_state.settings.get().isLocalSource();
}

const std::string& SetupView::address() const
{
    return m_state.settings.get().url;
}

std::string SetupView::folder() const
{
    const auto& settings = m_state.settings.get();
    return settings.localPath + (settings.localPath.ends_with('/') ? "" : "/")
        + settings.localEntry;
}

bool SetupView::isPasswordMissing() const
{
    const auto& settings = m_state.settings.get();
    return settings.requireExitPassword && settings.exitPassword.empty();
}

bool SetupView::isPasswordRequired() const
{
    return m_state.settings.get().requireExitPassword && !isPasswordMissing();
}

std::string SetupView::missing() const
{
    if (!m_state.hasSource())
        return "SET A URL OR FOLDER FIRST";
    if (isPasswordMissing())
        return "SET AN EXIT PASSWORD FIRST";
    return "";
}

bool SetupView::canSeal() const
{
    return isEnabled() && missing().empty();
}

std::string SetupView::sealTitle() const
{
    const auto first = missing();
    return first.empty() ? "_Seal this display" : first;
}

bool SetupView::isEnabled() const
{
    return !m_state.isKioskActive.get();
}

void SetupView::setAddress(const std::string& address)
{
    if (address == m_state.settings.get().url)
        return;
    m_state.settings.update([&](KioskSettings& settings) { settings.url = address; });
    m_state.saveSettings();
}

void SetupView::chooseSource()
{
    m_state.chooseLocalSource();
}

void SetupView::clearLocalSource()
{
    m_state.clearLocalSource();
}

void SetupView::seal()
{
    if (!canSeal() || m_prompt || isWaitingForRelease())
        return;
    if (isPasswordRequired())
        askForPassword();
    else
        launch();
}

void SetupView::launch()
{
    // This screen stands for the first-run guide too: whoever seals from it is done with it.
    if (!m_state.hasOnboarded.get())
        m_state.completeOnboarding();
    m_state.launchKiosk();
}

void SetupView::appear()
{
    m_isThere = true;
    updateArmer();
}

void SetupView::disappear()
{
    m_isThere = false;
    m_releaseCheck.reset();
    m_isWaitingForRelease.set(false);
    updateArmer();
}

void SetupView::updateArmer()
{
    const bool isFree = isEnabled() && !m_state.autoStartCountdown.get() && !m_prompt;
    if (m_isThere && isFree)
        m_armer.start();
    else
        m_armer.stop();
}

void SetupView::rearm()
{
    m_armer.stop();
    updateArmer();
}

void SetupView::holdCompleted()
{
    if (!canSeal()) {
        rearm();
    } else if (isPasswordRequired()) {
        askForPassword();
    } else {
        m_isWaitingForRelease.set(true);
        launchWhenKeysReleased(0);
    }
}

/// Keeps the S that is still held from reaching the page.
void SetupView::launchWhenKeysReleased(int attempt)
{
    if (!m_armer.isSUp() && attempt < lastReleaseCheck) {
        m_releaseCheck = m_runLoop.after(
            releaseCheckInterval, [this, attempt] { launchWhenKeysReleased(attempt + 1); });
        return;
    }
    m_isWaitingForRelease.set(false);
    launch();
    rearm();
}

void SetupView::askForPassword()
{
    m_prompt = std::make_unique<SealPrompt>(
        SealPrompt::Question {
            .title = "SEAL WEBSITE",
            .message = "Enter the exit password to start kiosk mode",
            .validate =
                [this](const std::string& text) {
                    return areCanonicallyEquivalent(text, m_state.settings.get().exitPassword);
                },
            .onSuccess =
                [this] {
                    dismissPrompt();
                    launch();
                    rearm();
                },
            .onCancel = [this] { dismissPrompt(); },
            .confirmLabel = "SEAL IT",
        },
        m_runLoop);
    updateArmer();
    m_isAsking.set(true);
    m_prompt->appear();
}

void SetupView::dismissPrompt()
{
    m_isAsking.set(false); // Whoever shows the prompt lets go of it now.
    m_prompt.reset();
    updateArmer();
}

void SetupView::handleActiveChanged()
{
    if (!isEnabled() && m_prompt)
        dismissPrompt();
    updateArmer();
}

SealHoldOverlay SetupView::holdOverlay() const
{
    return { "SEALING IN PROGRESS", missing().empty() ? m_armer.progress.get() : 0 };
}

SealHintOverlay SetupView::hintOverlay() const
{
    const auto first = missing();
    return { first, !first.empty() && m_armer.progress.get() > SealHoldOverlay::shownAbove };
}

std::vector<Handle> SetupView::observe(const std::function<void()>& onChange)
{
    std::vector<Handle> handles;
    handles.push_back(m_state.settings.observe([onChange](const auto&) { onChange(); }));
    handles.push_back(m_state.isKioskActive.observe([onChange](const auto&) { onChange(); }));
    handles.push_back(m_state.autoStartCountdown.observe([onChange](const auto&) { onChange(); }));
    handles.push_back(m_isAsking.observe([onChange](bool) { onChange(); }));
    return handles;
}

std::vector<Handle> SetupView::observeGesture(const std::function<void()>& onChange)
{
    std::vector<Handle> handles;
    handles.push_back(m_armer.progress.observe([onChange](double) { onChange(); }));
    handles.push_back(m_isWaitingForRelease.observe([onChange](bool) { onChange(); }));
    handles.push_back(m_isAsking.observe([onChange](bool) { onChange(); }));
    return handles;
}

} // namespace quillox
