#include "lockdown/DisplaySleepBlocker.h"

#include "ports/SystemLog.h"

#include <fmt/format.h>
#include <utility>

namespace quillox {

namespace {

    constexpr std::uint32_t assertionLevelOn = 255;

} // namespace

void DisplaySleepBlocker::start()
{
    if (m_isActive)
        return;
    const auto created = m_assertions.create(
        "PreventUserIdleDisplaySleep", assertionLevelOn, "Quillox kiosk is sealed");
    if (created.result != 0) {
        m_log.write(fmt::format(
            "Quillox: could not create display-sleep assertion (error {}).", created.result));
        return;
    }
    m_assertionID = created.identifier;
    m_isActive = true;
}

void DisplaySleepBlocker::stop()
{
    if (!std::exchange(m_isActive, false))
        return;
    m_assertions.release(std::exchange(m_assertionID, 0));
}

} // namespace quillox
