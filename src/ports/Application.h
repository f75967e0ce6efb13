#pragma once

#include <cstdint>

namespace quillox {

/// What the session lets the user do beside the application, as one set of bits.
enum class PresentationOptions : std::uint32_t {
    Default = 0,
    HideDock = 1 << 1, ///< Panels and docks.
    HideMenuBar = 1 << 3,
    DisableAppleMenu = 1 << 4, ///< The session's own menu.
    DisableProcessSwitching = 1 << 5,
    DisableForceQuit = 1 << 6, ///< Closing the application's windows from outside.
    DisableSessionTermination = 1 << 7, ///< Log-out, restart, shut-down, suspend.
    DisableHideApplication = 1 << 8, ///< Minimising.
    DisableMenuBarTransparency = 1 << 9,
};

constexpr PresentationOptions operator|(PresentationOptions left, PresentationOptions right)
{
    return static_cast<PresentationOptions>(
        static_cast<std::uint32_t>(left) | static_cast<std::uint32_t>(right));
}

constexpr bool contains(PresentationOptions options, PresentationOptions option)
{
    return (static_cast<std::uint32_t>(options) & static_cast<std::uint32_t>(option)) != 0;
}

/// This application as the session sees it. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    virtual PresentationOptions presentationOptions() const = 0;

    /// Puts the whole set into force; what the session cannot give is logged and left out.
    virtual void setPresentationOptions(PresentationOptions) = 0;

    /// Brings the application to the front; `ignoringOthers`: even while the user works in another
    /// one.
    virtual void activate(bool ignoringOthers) = 0;

    /// Makes every window that is visible key and front, in turn.
    virtual void bringVisibleWindowsForward() = 0;

    /// Takes the keyboard away from whatever has it in the key window, so that edits under way are
    /// committed.
    virtual void endTextEditing() = 0;

    /// Asks the application to end; the main loop is left soon after this returns.
    virtual void terminate() = 0;
};

} // namespace quillox
