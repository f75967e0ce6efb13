#include "ui/SetupView.h"

#include "app/AppState.h"

namespace quillox {

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

bool SetupView::canSeal() const
{
    return isEnabled() && m_state.hasSource() && !isPasswordMissing();
}

std::string SetupView::sealTitle() const
{
    if (!m_state.hasSource())
        return "SET A URL OR FOLDER FIRST";
    if (isPasswordMissing())
        return "SET AN EXIT PASSWORD FIRST";
    return "_Seal this display";
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
    if (!canSeal())
        return;
    // This screen stands for the first-run guide too: whoever seals from it is done with it.
    if (!m_state.hasOnboarded.get())
        m_state.completeOnboarding();
    m_state.launchKiosk();
}

std::vector<Handle> SetupView::observe(const std::function<void()>& onChange)
{
    std::vector<Handle> handles;
    handles.push_back(m_state.settings.observe([onChange](const auto&) { onChange(); }));
    handles.push_back(m_state.isKioskActive.observe([onChange](const auto&) { onChange(); }));
    handles.push_back(m_state.autoStartCountdown.observe([onChange](const auto&) { onChange(); }));
    return handles;
}

} // namespace quillox
