#pragma once

#include "config/SettingsEnumerations.h"
#include "config/Url.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillox {

class DefaultsStore;
class FileSystem;

/// Everything that the operator chooses about a kiosk. A plain value: a run keeps the copy that it
/// was started with.
struct KioskSettings {
    /// The remote start address as typed; only `startURL` judges it.
    std::string url = "https://";
    bool restrictToDomain = true;
    bool restrictToPath = false;
    /// Extra domains as typed, each good for its subdomains too.
    std::vector<std::string> allowedDomains {};
    /// Visitors can scroll but not click.
    bool scrollOnly = false;
    /// Seconds without input after which the start page returns; below 1: never.
    std::int64_t idleResetSeconds = 0;
    /// Plain text.
    std::string exitPassword {};
    bool requireExitPassword = false;
    /// Whether the login agent is installed.
    bool keepAlive = false;
    /// Whether the kiosk seals itself after launch.
    bool autoStartKiosk = false;
    /// The display number of the kiosk's screen; 0 is the primary screen.
    std::uint32_t displayID = 0;
    bool showBack = false;
    bool showForward = false;
    bool showRefresh = false;
    bool showHome = false;
    NavPosition navPosition = NavPosition::bottomCenter;
    /// Keeps the page below a camera housing.
    bool avoidNotch = false;
    NotchBarColor notchBarColor = NotchBarColor::black;
    SourceKind sourceKind = SourceKind::remote;
    /// Absolute path of the local website's folder.
    std::string localPath {};
    /// The page of that folder that is opened first.
    std::string localEntry = "index.html";
    bool autoUpdate = true;

    bool operator==(const KioskSettings&) const = default;

    /// Reads the record that `save` stored. Never fails: a field that is missing or malformed takes
    /// its default, and without a JSON object all of them do.
    static KioskSettings load(const DefaultsStore&);

    /// Stores the whole record. One that cannot be encoded (text that is not UTF-8) is not stored,
    /// silently.
    void save(DefaultsStore&) const;

    /// The record as a JSON object with all 22 keys in declaration order; none when it cannot be
    /// encoded.
    std::optional<std::string> encoded() const;

    /// None when `json` is not a JSON object; otherwise forgiving, field by field.
    static std::optional<KioskSettings> decoded(std::string_view json);

    /// A local source without a folder counts as remote in everything that follows.
    bool isLocalSource() const { return sourceKind == SourceKind::local && !localPath.empty(); }

    /// The folder of a local source, as a path without a trailing slash (save for "/" itself), when
    /// it exists and holds the entry page.
    std::optional<std::string> localRootURL(const FileSystem&) const;

    /// The first address that the kiosk opens. For a local source its existence is not tested.
    std::optional<Url> kioskStartURL() const;

    /// Whether there is something to seal.
    bool hasSource(const FileSystem&) const;

    /// The key under which usage is counted.
    std::string usageSourceKey() const;

    /// The remote address, unchanged, when it is http or https and has a host.
    std::optional<Url> startURL() const;

    /// One typed domain as a plain host in lower case: without blanks around it, a scheme, a path
    /// and full stops at its ends. None when nothing is left. Whatever else was typed (a port, a
    /// wildcard) stays, and then matches no host.
    static std::optional<std::string> normalizeHost(std::string_view text);

    /// The extra domains in their order, each normalized; what that leaves nothing of is left out.
    std::vector<std::string> allowedHosts() const;

    /// The section of the site that the start address is in: its path, decoded, without one slash
    /// at the end. None when the address has no path.
    std::optional<std::string> lockedPathPrefix() const;
};

} // namespace quillox
