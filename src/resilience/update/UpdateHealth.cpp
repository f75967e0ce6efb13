#include "resilience/update/UpdateHealth.h"

#include "ports/Installation.h"
#include "ports/SystemLog.h"
#include "resilience/update/UpdateTrial.h"

#include <fmt/format.h>
#include <utility>

namespace quillox {

void UpdateHealth::handleScreenShown()
{
    if (std::exchange(m_isNoted, true))
        return;
    const auto notes = UpdateNotes::parse(m_installation.notes());
    if (!notes.trial || notes.trial->version != m_installation.runningVersion())
        return;
    if (const auto failure = m_installation.writeNotes(UpdateTrial::succeeded(notes).text())) {
        m_log.write(fmt::format("Quillox: the updater cannot write its notes: {}.", *failure));
        return;
    }
    m_log.write(fmt::format("Quillox: version {} works.", notes.trial->version.text()));
    std::vector<Version> kept { notes.trial->previous };
    if (notes.staged)
        kept.push_back(*notes.staged);
    m_installation.keepOnly(kept);
}

} // namespace quillox
