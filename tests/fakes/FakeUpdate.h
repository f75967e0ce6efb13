#pragma once

#include "ports/Installation.h"
#include "ports/RunLoop.h"
#include "ports/SignatureCheck.h"
#include "ports/UpdateFeed.h"
#include "ports/UpdateProgressPanels.h"
#include "resilience/update/UpdateManifest.h"

#include <fmt/format.h>
#include <set>
#include <utility>

namespace quillox {

/// A web server that waits for the test to answer.
class FakeUpdateFeed final : public UpdateFeed {
public:
    std::string asked; ///< The address that waits; empty when none does.
    int fetches = 0;

    void answer(Outcome::Kind kind, std::string text = {})
    {
        asked.clear();
        std::exchange(m_onOutcome, nullptr)({ kind, "it is so", std::move(text) });
    }

    Handle fetchText(const std::string& address, std::size_t, OnOutcome onOutcome) override
    {
        ++fetches;
        return wait(address, std::move(onOutcome));
    }
    Handle fetchFile(const File& file, std::function<void(std::uint64_t)> onProgress,
        OnOutcome onOutcome) override
    {
        onProgress(file.size / 2);
        return wait(file.address, std::move(onOutcome));
    }

private:
    Handle wait(const std::string& address, OnOutcome onOutcome)
    {
        asked = address;
        m_onOutcome = std::move(onOutcome);
        return Handle([this, request = ++m_requests] {
            if (request == m_requests)
                asked.clear();
        });
    }

    OnOutcome m_onOutcome;
    int m_requests = 0;
};

/// A maker whose signature is a row of the letter s.
class FakeSignatureCheck final : public SignatureCheck {
public:
    explicit FakeSignatureCheck(RunLoop& runLoop)
        : m_runLoop(runLoop)
    {
    }

    std::string hash = std::string(64, 'a'); ///< Of every file.

    static std::string sign(const std::string& manifest)
    {
        std::string text(SignedManifest::format);
        for (int byte = 0; byte < 64; ++byte)
            text += fmt::format("{:02x}", 's');
        return text + "\n" + manifest;
    }

    bool isSigned(std::string_view, std::string_view signature) const override
    {
        return signature == std::string(64, 's');
    }
    Handle hashFile(
        const std::string&, std::function<void(std::optional<std::string>)> onHash) override
    {
        return m_runLoop.after({}, [this, onHash] { onHash(hash); });
    }

private:
    RunLoop& m_runLoop;
};

/// A folder that runs 1.0.0.
class FakeInstallation final : public Installation {
public:
    explicit FakeInstallation(RunLoop& runLoop)
        : m_runLoop(runLoop)
    {
    }

    Version running { 1, 0, 0 };
    Version current { 1, 0, 0 };
    std::set<Version> versions { { 1, 0, 0 } };
    std::string written;
    Failure failure; ///< Of whatever is tried next.

    Version runningVersion() const override { return running; }
    bool hasVersion(Version version) const override { return versions.contains(version); }
    std::string notes() const override { return written; }
    Failure writeNotes(const std::string& notes) override
    {
        written = notes;
        return std::nullopt;
    }
    std::string archivePath(const std::string& sha256) override { return "/" + sha256; }
    Handle stage(const std::string&, Version version, std::function<void(Failure)> onDone) override
    {
        return m_runLoop.after({}, [this, version, onDone] {
            if (!failure)
                versions.insert(version);
            onDone(failure);
        });
    }
    Failure makeCurrent(Version version) override
    {
        if (!failure)
            current = version;
        return failure;
    }
    void keepOnly(const std::vector<Version>& kept) override
    {
        versions = { kept.begin(), kept.end() };
        versions.insert(running);
    }

private:
    RunLoop& m_runLoop;
};

struct FakeUpdateProgressPanels final : UpdateProgressPanels {
    double shown = -1; ///< Negative while there is no panel.
    std::function<void()> cancel;

    Handle show(
        const std::string&, Published<double>& fraction, std::function<void()> onCancel) override
    {
        shown = fraction.get();
        cancel = std::move(onCancel);
        auto observation
            = std::make_shared<Handle>(fraction.observe([this](double done) { shown = done; }));
        return Handle([this, observation] {
            observation->reset();
            shown = -1;
        });
    }
};

} // namespace quillox
