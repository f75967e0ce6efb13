#include "app/AppState.h"

#include "config/DefaultsKeys.h"
#include "kiosk/KioskController.h"
#include "ports/AccessibilityTrust.h"
#include "ports/DefaultsStore.h"
#include "ports/Dialogs.h"
#include "ports/FileSystem.h"
#include "ports/RunLoop.h"
#include "ports/Workspace.h"

#include <utility>

namespace quillox {

namespace {

    using namespace std::chrono_literals;

    constexpr auto finishingInterlude = 1800ms;
    constexpr auto countdownStep = 1s;
    constexpr auto defaultEntry = "index.html";

    std::string parentOf(const std::string& path)
    {
        const auto slash = path.find_last_of('/');
        return slash == 0 ? "/" : path.substr(0, slash);
    }

    std::string lastComponentOf(const std::string& path)
    {
        return path.substr(path.find_last_of('/') + 1);
    }

} // namespace

AppState::AppState(Machine machine, KioskController& controller, std::function<bool()> canCreateTap)
    : settings(KioskSettings::load(machine.defaults))
    , hasOnboarded(machine.defaults.boolean(hasOnboardedKey))
    , m_machine(machine)
    , m_controller(controller)
    , m_canCreateTap(std::move(canCreateTap))
{
}

void AppState::saveSettings()
{
    settings.get().save(m_machine.defaults);
}

bool AppState::hasSource() const
{
    return settings.get().hasSource(m_machine.fileSystem);
}

void AppState::completeOnboarding()
{
    saveSettings();
    hasOnboarded.set(true);
    m_machine.defaults.setBoolean(hasOnboardedKey, true);
    showFinishingScreen.set(true);
    m_finishingTimer
        = m_machine.runLoop.after(finishingInterlude, [this] { showFinishingScreen.set(false); });
}

void AppState::chooseLocalSource()
{
    const OpenPanel panel {
        .canChooseDirectories = true,
        .canChooseFiles = true,
        .allowsMultipleSelection = false,
        .contentTypes = { "text/html" },
        .prompt = "Use for Kiosk",
        .message = "Choose a website folder (with an index.html) or an HTML file.",
    };
    m_machine.dialogs.present(
        panel, m_lifetime.guard([this](const std::optional<std::string>& path) {
            if (path && !path->empty())
                useLocalSource(*path);
        }));
}

void AppState::useLocalSource(const std::string& path)
{
    const bool isFolder = m_machine.fileSystem.isDirectory(path);
    settings.update([&](KioskSettings& changed) {
        changed.localPath = isFolder ? path : parentOf(path);
        changed.localEntry = isFolder ? defaultEntry : lastComponentOf(path);
        changed.sourceKind = SourceKind::local;
    });
    saveSettings();
}

void AppState::clearLocalSource()
{
    settings.update([](KioskSettings& changed) {
        changed.sourceKind = SourceKind::remote;
        changed.localPath.clear();
        changed.localEntry = defaultEntry;
    });
    saveSettings();
}

void AppState::beginAutoStart(int seconds)
{
    if (!hasSource())
        return;
    m_autoStartTimer.reset();
    autoStartCountdown.set(seconds);
    m_autoStartTimer = m_machine.runLoop.every(countdownStep, [this] { tickAutoStart(); });
}

void AppState::tickAutoStart()
{
    const int left = autoStartCountdown.get().value_or(1) - 1;
    if (left >= 1) {
        autoStartCountdown.set(left);
        return;
    }
    m_autoStartTimer.reset();
    autoStartCountdown.set(std::nullopt);
    m_machine.runLoop.post(m_lifetime.guard([this] { launchKiosk(); }));
}

void AppState::cancelAutoStart()
{
    m_autoStartTimer.reset();
    autoStartCountdown.set(std::nullopt);
}

void AppState::launchKiosk()
{
    if (!hasSource())
        return;
    if (!canLockKeyboard()) {
        askForAccessibility();
        return;
    }
    if (!canShowPages()) {
        presentNoEngineAlert();
        return;
    }
    saveSettings();
    m_machine.application.endTextEditing();
    isKioskActive.set(true);
    const bool isRunning = m_controller.start(
        settings.get(), m_lifetime.guard([this] { isKioskActive.set(false); }));
    if (isRunning)
        return;
    isKioskActive.set(false);
    presentLockdownFailedAlert();
}

bool AppState::canShowPages() const
{
    return m_controller.canShowPages();
}

bool AppState::canLockKeyboard() const
{
    return m_machine.accessibility.isProcessTrusted() || (m_canCreateTap && m_canCreateTap());
}

void AppState::askForAccessibility()
{
    // Only the question matters here; the answer comes from the operator, later.
    static_cast<void>(m_machine.accessibility.isProcessTrustedWithPrompt());
    presentAccessibilityAlert(false, "Grant Accessibility permission",
        "Quillox needs Accessibility access to fully lock the keyboard — without it, system "
        "shortcuts like Spotlight (⌘Space / ⌘⌥Space) can still escape the kiosk.\n\n"
        "Enable Quillox under Accessibility, then hold ⌘⇧S again.");
}

void AppState::presentNoEngineAlert()
{
    const Alert alert {
        .style = Alert::Style::Warning,
        .message = "The web engine is missing — kiosk not started",
        .informativeText = "A part of Quillox that shows web pages is not installed, or belongs to "
                           "another version. Quit Quillox and start it again; if that does not "
                           "help, install it anew.",
        .buttons = { "OK" },
    };
    m_machine.dialogs.present(alert, [](std::size_t) {});
}

void AppState::presentLockdownFailedAlert()
{
    presentAccessibilityAlert(true, "Couldn't lock the keyboard — kiosk not started",
        "Quillox shows as having Accessibility access, but the keyboard lock didn't engage, so the "
        "kiosk was not started (it would have been escapable).\n\n"
        "Fix it: in System Settings ▸ Privacy & Security ▸ Accessibility, remove Quillox (–), add "
        "it again, then seal once more.");
}

void AppState::presentAccessibilityAlert(bool isWarning, std::string message, std::string text)
{
    const Alert alert {
        .style = isWarning ? Alert::Style::Warning : Alert::Style::Informational,
        .message = std::move(message),
        .informativeText = std::move(text),
        .buttons = { "Open System Settings", "Cancel" },
    };
    m_machine.dialogs.present(alert, m_lifetime.guard([this](std::size_t button) {
        if (button == 0)
            m_machine.workspace.open(accessibilitySettings);
    }));
}

} // namespace quillox
