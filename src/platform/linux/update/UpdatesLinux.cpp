#include "platform/linux/update/UpdatesLinux.h"

#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/update/UpdateParts.h"
#include "ports/SystemLog.h"
#include "resilience/update/AbsentUpdaters.h"
#include "resilience/update/SelfUpdaters.h"

#include <fmt/format.h>
#include <glib.h>
#include <gnu/libc-version.h>

namespace quillox {

namespace {

    constexpr auto properties = "resources/update.properties";
    constexpr std::size_t largestProperties = 4096;

    /// The C library counts with two numbers.
    Version systemVersion()
    {
        return Version::parse(fmt::format("{}.0", gnu_get_libc_version())).value_or(Version {});
    }

} // namespace

std::unique_ptr<UpdatesLinux> UpdatesLinux::find(
    const std::string& executable, Surroundings surroundings)
{
    auto place = InstallationFolders::find(executable);
    if (!place)
        return nullptr;
    return std::unique_ptr<UpdatesLinux>(new UpdatesLinux(std::move(*place), surroundings));
}

UpdatesLinux::UpdatesLinux(InstallationFolders::Place place, Surroundings surroundings)
    : m_installation(std::move(place), surroundings.runLoop)
    , m_health(m_installation, surroundings.log)
    , m_updaters(makeUpdaters(surroundings))
{
}

UpdatesLinux::~UpdatesLinux() = default;

std::unique_ptr<Updaters> UpdatesLinux::makeUpdaters(Surroundings surroundings)
{
    const auto folder = m_installation.folders().folderOf(m_installation.runningVersion());
    const auto path = fmt::format("{}/{}", folder, properties);
    const auto source = UpdateSource::parse(readFile(path, largestProperties).text.value_or(""));
    if (!source)
        return std::make_unique<AbsentUpdaters>(surroundings.dialogs, surroundings.log,
            "This installation does not say where updates come from.");
    const auto& [parts, failure] = updateParts();
    if (!parts) {
        surroundings.log.write(fmt::format("Quillox: there are no updates: {}.", failure));
        return std::make_unique<AbsentUpdaters>(surroundings.dialogs, surroundings.log,
            "A part of this installation is missing. Install Quillox again.");
    }
    m_feed.reset(parts->makeFeed(surroundings.runLoop));
    m_signatures.reset(parts->makeSignatureCheck(source->publicKey, surroundings.runLoop));
    return std::make_unique<SelfUpdaters>(
        UpdateMachine { surroundings.runLoop, *m_feed, *m_signatures, m_installation,
            surroundings.log, *source, systemVersion() },
        SelfUpdater::Surroundings { surroundings.dialogs, surroundings.progressPanels,
            surroundings.workspace, g_random_double() });
}

} // namespace quillox
