#pragma once

#include "lockdown/LaunchArmer.h"
#include "lockdown/SealOverlays.h"
#include "lockdown/SealPrompt.h"
#include "support/Handle.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace quillox {

class AppState;

/// The plain setup screen: what to show, the control that seals, and the gesture that does the
/// same. Main thread only.
class SetupView {
public:
    SetupView(AppState&, LaunchArmer::Machine);

    static constexpr auto heading = "QUILLOX";
    static constexpr auto help = "Show one website on this display, and nothing else.";
    static constexpr auto addressLabel = "WEBSITE ADDRESS";
    static constexpr auto folderLabel = "WEBSITE FOLDER";
    static constexpr auto chooseTitle = "Choose a _folder or HTML file…";
    static constexpr auto clearTitle = "Use an _address instead";
    static constexpr auto sealName = "Seal this display";
    static constexpr auto exitHelp
        = "Hold Super, Shift and S to seal, and again to leave the sealed page.";

    /// Whether the source is a folder; the address is not used then.
    bool isLocal() const;
    const std::string& address() const;
    /// Folder and entry page of a local source.
    std::string folder() const;

    bool canSeal() const;
    /// What the sealing control says: its purpose, or what is missing first. An underscore precedes
    /// its mnemonic.
    std::string sealTitle() const;
    /// Not while a run hides the screen: what is typed then is not meant for it.
    bool isEnabled() const;

    /// Each change is stored at once.
    void setAddress(const std::string& address);
    void chooseSource();
    void clearLocalSource();

    /// Asks for the exit password first when one is required.
    void seal();

    /// The gesture is watched for as long as the screen is there and nothing else is going on.
    void appear();
    void disappear();

    SealHoldOverlay holdOverlay() const;
    SealHintOverlay hintOverlay() const;
    /// The gesture is done, and its keys are still down.
    bool isWaitingForRelease() const { return m_isWaitingForRelease.get(); }
    /// None while no password is asked for.
    SealPrompt* prompt() const { return m_isAsking.get() ? m_prompt.get() : nullptr; }

    /// Calls back after anything that is shown has changed, but for the gesture.
    [[nodiscard]] std::vector<Handle> observe(const std::function<void()>& onChange);

    /// Calls back after an overlay of the gesture or the prompt has changed: sixty times a second
    /// during a hold.
    [[nodiscard]] std::vector<Handle> observeGesture(const std::function<void()>& onChange);

private:
    bool isPasswordMissing() const;
    bool isPasswordRequired() const;
    /// Empty when nothing is.
    std::string missing() const;

    void updateArmer();
    void rearm();
    void holdCompleted();
    void launchWhenKeysReleased(int attempt);
    void askForPassword();
    void dismissPrompt();
    void handleActiveChanged();
    void launch();

    AppState& m_state;
    RunLoop& m_runLoop;
    LaunchArmer m_armer;
    bool m_isThere = false;
    Published<bool> m_isWaitingForRelease { false };
    Published<bool> m_isAsking { false };
    std::unique_ptr<SealPrompt> m_prompt;
    Handle m_releaseCheck;
    std::vector<Handle> m_observations;
};

} // namespace quillox
