#include "platform/linux/lock/SymbolicHotKeysLinux.h"

#include "platform/linux/lock/RestoreNote.h"
#include "platform/linux/lock/ServerMark.h"
#include "ports/RunLoop.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>
#include <utility>

namespace quillox {

namespace {

    constexpr std::array<std::int32_t, 7> knownNumbers { 28, 29, 30, 31, 184, 64, 65 };

} // namespace

std::string currentDesktops()
{
    const auto* desktops = std::getenv("XDG_CURRENT_DESKTOP");
    return desktops ? desktops : "";
}

SymbolicHotKeysLinux::SymbolicHotKeysLinux(
    RestoreNote& note, RunLoop& runLoop, SystemLog& log, std::string_view desktops)
    : m_note(note)
    , m_runLoop(runLoop)
    , m_serverKeys(ServerKeysX11::make(gdk_display_get_default()))
    , m_desktop(desktops)
    , m_kde(log)
    , m_isKde(namesDesktop(desktops, "KDE"))
{
    m_kde.onUnblocked = [this] {
        if (m_off.empty()) {
            m_note.contents().hasBlockedGlobalShortcuts = false;
            m_note.save();
        }
    };
    if (m_serverKeys) {
        m_serverKeys->onChange = [this] {
            if (!m_off.empty())
                requestSettling();
        };
    }
}

SymbolicHotKeysLinux::~SymbolicHotKeysLinux()
{
    if (m_noted.empty())
        return;
    m_off.clear();
    settle();
}

void SymbolicHotKeysLinux::restoreAfterCrash()
{
    auto& contents = m_note.contents();
    if (contents.serverKeys && contents.server != serverMark(gdk_display_get_default()))
        contents.serverKeys.reset(); // That server is gone, and what was done to it.
    putBack();
    m_note.save();
}

bool SymbolicHotKeysLinux::isAvailable() const
{
    return m_serverKeys || m_isKde || m_desktop.isAvailable();
}

std::int32_t SymbolicHotKeysLinux::setEnabled(std::int32_t number, bool isEnabled)
{
    if (std::find(knownNumbers.begin(), knownNumbers.end(), number) == knownNumbers.end())
        return 0;
    const bool isChanged = isEnabled ? m_off.erase(number) > 0 : m_off.insert(number).second;
    if (isChanged)
        requestSettling();
    return 0;
}

void SymbolicHotKeysLinux::requestSettling()
{
    if (!std::exchange(m_isSettlingRequested, true))
        m_runLoop.post(m_lifetime.guard([this] { settle(); }));
}

void SymbolicHotKeysLinux::settle()
{
    m_isSettlingRequested = false;
    putBack();
    noteWhatIsThere();
    m_note.save(m_lifetime.guard([this] { switchOff(); }));
}

void SymbolicHotKeysLinux::putBack()
{
    auto& contents = m_note.contents();
    std::erase_if(contents.settings, [this](const TakenSetting& setting) {
        const bool isBack = !m_off.contains(setting.number);
        if (isBack)
            m_desktop.putBack(setting);
        return isBack;
    });
    std::erase_if(m_noted, [this](std::int32_t number) { return !m_off.contains(number); });
    if (!m_off.empty())
        return;
    if (contents.serverKeys && m_serverKeys)
        m_serverKeys->putBack(*contents.serverKeys);
    contents.serverKeys.reset();
    if (contents.hasBlockedGlobalShortcuts)
        m_kde.setBlocked(false);
}

void SymbolicHotKeysLinux::noteWhatIsThere()
{
    if (m_off.empty())
        return;
    auto& contents = m_note.contents();
    for (const auto number : m_off) {
        if (!m_noted.insert(number).second)
            continue;
        auto found = m_desktop.find(number);
        std::move(found.begin(), found.end(), std::back_inserter(contents.settings));
    }
    if (m_serverKeys) {
        contents.server = serverMark(gdk_display_get_default());
        if (!contents.serverKeys)
            contents.serverKeys.emplace();
        m_serverKeys->note(*contents.serverKeys);
    }
    contents.hasBlockedGlobalShortcuts = contents.hasBlockedGlobalShortcuts || m_isKde;
}

void SymbolicHotKeysLinux::switchOff()
{
    if (m_off.empty())
        return;
    const auto& contents = m_note.contents();
    for (const auto& setting : contents.settings)
        m_desktop.switchOff(setting);
    if (m_serverKeys && contents.serverKeys)
        m_serverKeys->takeAway(*contents.serverKeys);
    if (m_isKde)
        m_kde.setBlocked(true);
}

} // namespace quillox
