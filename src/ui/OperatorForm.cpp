#include "ui/OperatorForm.h"

#include "app/AppState.h"
#include "ports/FileSystem.h"
#include "resilience/UpdateController.h"
#include "resilience/Watchdog.h"
#include "support/CanonicalText.h"

#include <algorithm>
#include <fmt/format.h>

namespace quillox {

OperatorForm::OperatorForm(AppState& app, Machine machine, std::string appVersion)
    : m_app(app)
    , m_machine(machine)
    , m_appVersion(std::move(appVersion))
{
}

void OperatorForm::appear()
{
    m_showExitPassword.set(false);
    m_domainDraft.set("");
    m_screenChanges
        = m_machine.screens.onChange([this] { m_displays.set(Displays::list(m_machine.screens)); });
    m_displays.set(Displays::list(m_machine.screens));
    // The switch shows what the system really has.
    m_machine.watchdog.readEnabled(m_agentReading.guard(
        [this](bool isEnabled) { set(&KioskSettings::keepAlive, isEnabled); }));
}

void OperatorForm::disappear()
{
    m_screenChanges.reset();
}

const KioskSettings& OperatorForm::settings() const
{
    return m_app.settings.get();
}

template <typename Change> void OperatorForm::change(Change change)
{
    const auto before = settings();
    auto after = before;
    change(after);
    if (after == before)
        return;
    m_app.settings.set(after);
    m_app.saveSettings();
    if (after.keepAlive != before.keepAlive) {
        m_agentReading = Lifetime(); // An answer that comes late does not undo this.
        m_machine.watchdog.setEnabled(after.keepAlive);
    }
    if (after.autoUpdate != before.autoUpdate)
        m_machine.updates.apply(after.autoUpdate);
}

template <typename Value> void OperatorForm::set(Value KioskSettings::*field, const Value& value)
{
    change([&](KioskSettings& settings) { settings.*field = value; });
}

AccentTextField OperatorForm::field(std::string KioskSettings::*member)
{
    AccentTextField field;
    field.text = { [this, member] { return settings().*member; },
        [this, member](const std::string& text) { set(member, text); } };
    return field;
}

bool OperatorForm::isLocal() const
{
    return settings().isLocalSource();
}

std::string OperatorForm::localTitle() const
{
    const auto& path = settings().localPath;
    const auto end = path.find_last_not_of('/');
    const auto name = end == std::string::npos
        ? path
        : path.substr(0, end + 1).substr(path.find_last_of('/', end) + 1);
    return name + " / " + settings().localEntry;
}

bool OperatorForm::localWarn() const
{
    return isLocal() && !settings().localRootURL(m_machine.fileSystem);
}

AccentTextField OperatorForm::urlField()
{
    auto url = field(&KioskSettings::url);
    url.placeholder = urlPlaceholder;
    url.accessibleName = "Website address";
    return url;
}

void OperatorForm::chooseSource()
{
    m_app.chooseLocalSource();
}

void OperatorForm::clearSource()
{
    m_app.clearLocalSource();
}

bool OperatorForm::isOn(const SettingToggle& toggle) const
{
    return settings().*toggle.field;
}

bool OperatorForm::canChange(const SettingToggle& toggle) const
{
    return toggle.field != &KioskSettings::restrictToPath || settings().lockedPathPrefix();
}

std::string_view OperatorForm::help(const SettingToggle& toggle) const
{
    return canChange(toggle) ? toggle.caption.help : pathMissingHelp;
}

void OperatorForm::setOn(const SettingToggle& toggle, bool isOn)
{
    if (canChange(toggle))
        set(toggle.field, isOn);
}

AccentTextField OperatorForm::domainField()
{
    return {
        .text = { [this] { return m_domainDraft.get(); },
            [this](const std::string& text) { m_domainDraft.set(text); } },
        .placeholder = domainPlaceholder,
        .onSubmit = [this] { addDomain(); },
        .accessibleName = "Domain to allow, too",
    };
}

const std::vector<std::string>& OperatorForm::domains() const
{
    return settings().allowedDomains;
}

void OperatorForm::addDomain()
{
    const auto host = KioskSettings::normalizeHost(m_domainDraft.get());
    m_domainDraft.set("");
    if (!host)
        return;
    const auto isHost = [&](const auto& domain) { return lowercased(domain) == lowercased(*host); };
    if (std::ranges::none_of(domains(), isHost))
        change([&](KioskSettings& settings) { settings.allowedDomains.push_back(*host); });
}

void OperatorForm::removeDomain(std::size_t index)
{
    if (index >= domains().size())
        return;
    change([&](KioskSettings& settings) {
        settings.allowedDomains.erase(
            settings.allowedDomains.begin() + static_cast<std::ptrdiff_t>(index));
    });
}

std::string_view OperatorForm::positionName(NavPosition position)
{
    switch (position) {
    case NavPosition::topLeft:
        return "Top left";
    case NavPosition::topCenter:
        return "Top center";
    case NavPosition::topRight:
        return "Top right";
    case NavPosition::bottomLeft:
        return "Bottom left";
    case NavPosition::bottomCenter:
        return "Bottom center";
    case NavPosition::bottomRight:
        return "Bottom right";
    }
    return "";
}

NavPosition OperatorForm::navPosition() const
{
    return settings().navPosition;
}

void OperatorForm::setNavPosition(NavPosition position)
{
    set(&KioskSettings::navPosition, position);
}

std::vector<DisplayInfo> OperatorForm::displayItems() const
{
    std::vector<DisplayInfo> items { { 0, std::string(primaryDisplay) } };
    std::ranges::copy(m_displays.get(), std::back_inserter(items));
    return items;
}

std::uint32_t OperatorForm::displayID() const
{
    return settings().displayID;
}

std::string OperatorForm::displayLabel() const
{
    const auto id = displayID();
    const bool isThere = id != 0
        && std::ranges::find(m_displays.get(), id, &DisplayInfo::id) != m_displays.get().end();
    return isThere ? fmt::format("DISPLAY {}", id) : "PRIMARY (AUTOMATIC)";
}

void OperatorForm::setDisplay(std::uint32_t displayID)
{
    set(&KioskSettings::displayID, displayID);
}

std::string_view OperatorForm::barColorTitle(NotchBarColor color)
{
    return color == NotchBarColor::black ? "BLACK" : "WEBSITE COLOR";
}

NotchBarColor OperatorForm::notchBarColor() const
{
    return settings().notchBarColor;
}

void OperatorForm::setNotchBarColor(NotchBarColor color)
{
    set(&KioskSettings::notchBarColor, color);
}

std::string OperatorForm::idlePresetLabel() const
{
    for (const auto& [label, seconds] : idlePresets) {
        if (seconds == idleResetSeconds())
            return std::string(label);
    }
    return fmt::format("{}s", idleResetSeconds());
}

std::int64_t OperatorForm::idleResetSeconds() const
{
    return settings().idleResetSeconds;
}

void OperatorForm::setIdleReset(std::int64_t seconds)
{
    set(&KioskSettings::idleResetSeconds, seconds);
}

bool OperatorForm::exitPasswordWarn() const
{
    return settings().requireExitPassword && settings().exitPassword.empty();
}

void OperatorForm::toggleShowExitPassword()
{
    m_showExitPassword.set(!showsExitPassword());
}

AccentTextField OperatorForm::passwordField()
{
    auto password = field(&KioskSettings::exitPassword);
    password.isSecure = !showsExitPassword();
    password.placeholder = passwordPlaceholder;
    password.accessibleName = "Exit password";
    return password;
}

void OperatorForm::checkForUpdates()
{
    m_machine.updates.checkForUpdates();
}

std::string OperatorForm::versionLine() const
{
    return "Version " + (m_appVersion.empty() ? "?" : m_appVersion);
}

std::vector<Handle> OperatorForm::observe(const std::function<void()>& onChange)
{
    const auto tell = [&onChange](auto& published) {
        return published.observe([onChange](const auto&) { onChange(); });
    };
    std::vector<Handle> handles;
    handles.push_back(tell(m_app.settings));
    handles.push_back(tell(m_displays));
    handles.push_back(tell(m_showExitPassword));
    handles.push_back(tell(m_domainDraft));
    return handles;
}

} // namespace quillox
