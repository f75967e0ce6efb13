#include "resilience/update/UpdateCycle.h"

#include "ports/Installation.h"
#include "ports/RunLoop.h"
#include "ports/SignatureCheck.h"
#include "ports/SystemLog.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace quillox {

using Kind = UpdateCycle::Outcome::Kind;

UpdateCycle::UpdateCycle(UpdateMachine machine)
    : m_machine(std::move(machine))
{
}

UpdateNotes UpdateCycle::notes() const
{
    return UpdateNotes::parse(m_machine.installation.notes());
}

bool UpdateCycle::write(const UpdateNotes& notes)
{
    const auto failure = m_machine.installation.writeNotes(notes.text());
    if (failure)
        m_machine.log.write(
            fmt::format("Quillox: the updater cannot write its notes: {}.", *failure));
    return !failure;
}

std::optional<Version> UpdateCycle::found() const
{
    return m_found ? std::optional(m_found->version) : std::nullopt;
}

std::optional<Version> UpdateCycle::staged() const
{
    const auto present = notes();
    const auto version = present.staged;
    const bool isUsable = version && *version > m_machine.installation.runningVersion()
        && !present.rolledBack.contains(*version) && m_machine.installation.hasVersion(*version);
    return isUsable ? version : std::nullopt;
}

void UpdateCycle::check(OnOutcome onOutcome)
{
    m_onOutcome = std::move(onOutcome);
    m_found.reset();
    m_step = m_machine.feed.fetchText(m_machine.source.feed, SignedManifest::largestSize,
        [this](const UpdateFeed::Outcome& outcome) { handleManifest(outcome); });
}

void UpdateCycle::handleManifest(const UpdateFeed::Outcome& outcome)
{
    if (!passOn(outcome))
        return;
    const auto signedManifest = SignedManifest::parse(outcome.text);
    if (!signedManifest)
        return refuse("the feed holds no signed manifest");
    // Nothing that is not signed is looked at any closer.
    if (!m_machine.signatures.isSigned(signedManifest->signedBytes, signedManifest->signature))
        return refuse("the manifest's signature is wrong");
    const auto manifest = UpdateManifest::parse(signedManifest->manifest());
    if (!manifest)
        return refuse("the manifest is malformed");
    handleTrustedManifest(*manifest);
}

void UpdateCycle::handleTrustedManifest(UpdateManifest manifest)
{
    auto present = notes();
    const auto verdict = judge(manifest,
        { m_machine.installation.runningVersion(), m_machine.system, present,
            m_machine.runLoop.now() });
    const auto issued = manifest.issued.time_since_epoch().count();
    if (issued > present.newestIssued) {
        present.newestIssued = issued;
        write(present);
    }
    switch (verdict.kind) {
    case UpdateVerdict::Kind::UpToDate:
        return finish({ Kind::UpToDate, {} });
    case UpdateVerdict::Kind::Newer:
        m_found = std::move(manifest);
        return finish({ Kind::Found, {} });
    case UpdateVerdict::Kind::Refused:
        return refuse(verdict.reason);
    }
}

void UpdateCycle::fetch(OnOutcome onOutcome)
{
    m_onOutcome = std::move(onOutcome);
    if (!m_found || staged() == m_found->version) {
        m_step = m_machine.runLoop.after({}, [this] {
            if (m_found)
                finish({ Kind::Staged, {} });
            else
                fail("there is nothing to fetch");
        });
        return;
    }
    m_progress.set(0);
    m_archive = { m_machine.source.addressOf(m_found->file),
        m_machine.installation.archivePath(m_found->sha256), m_found->size };
    m_step = m_machine.feed.fetchFile(
        m_archive,
        [this](std::uint64_t bytes) {
            m_progress.set(static_cast<double>(bytes) / static_cast<double>(m_archive.size));
        },
        [this](const UpdateFeed::Outcome& outcome) { handleArchive(outcome); });
}

void UpdateCycle::cancel()
{
    m_step.reset();
    m_onOutcome = nullptr;
}

void UpdateCycle::handleArchive(const UpdateFeed::Outcome& outcome)
{
    if (!passOn(outcome))
        return;
    m_step = m_machine.signatures.hashFile(
        m_archive.path, [this](const std::optional<std::string>& hash) { handleHash(hash); });
}

void UpdateCycle::handleHash(const std::optional<std::string>& hash)
{
    if (hash != m_found->sha256) {
        // Whatever it is, the next fetch must not go on from there.
        m_machine.installation.archivePath({});
        return refuse(
            fmt::format("the archive of {} is not what was signed", m_found->version.text()));
    }
    m_step = m_machine.installation.stage(m_archive.path, m_found->version,
        [this](const std::optional<std::string>& failure) { handleStaged(failure); });
}

void UpdateCycle::handleStaged(const std::optional<std::string>& failure)
{
    if (failure)
        return refuse(fmt::format("{} cannot be unpacked: {}", m_found->version.text(), *failure));
    auto present = notes();
    present.staged = m_found->version;
    if (!write(present))
        return finish({ Kind::Failed, "the updater cannot write its notes" });
    m_machine.log.write(
        fmt::format("Quillox: version {} is ready to be installed.", m_found->version.text()));
    finish({ Kind::Staged, {} });
}

/// Whether the fetch was complete; if not, it was the end of the cycle.
bool UpdateCycle::passOn(const UpdateFeed::Outcome& outcome)
{
    switch (outcome.kind) {
    case UpdateFeed::Outcome::Kind::Complete:
        return true;
    case UpdateFeed::Outcome::Kind::Interrupted:
        fail(outcome.reason);
        return false;
    case UpdateFeed::Outcome::Kind::Refused:
        refuse(outcome.reason);
        return false;
    }
    return false;
}

void UpdateCycle::refuse(const std::string& reason)
{
    m_machine.log.write(fmt::format("Quillox: update refused: {}.", reason));
    finish({ Kind::Refused, reason });
}

void UpdateCycle::fail(const std::string& reason)
{
    if (std::exchange(m_lastFailure, reason) != reason)
        m_machine.log.write(fmt::format("Quillox: could not look for updates: {}.", reason));
    finish({ Kind::Failed, reason });
}

void UpdateCycle::finish(Outcome outcome)
{
    if (outcome.kind != Kind::Failed)
        m_lastFailure.clear();
    std::exchange(m_onOutcome, nullptr)(std::move(outcome));
}

} // namespace quillox
