#include "resilience/update/UpdateRules.h"

#include <array>
#include <fmt/format.h>

namespace quillox {

namespace {

    using Manifest = UpdateManifest;
    using Circumstances = UpdateCircumstances;
    using Kind = UpdateVerdict::Kind;

    struct Rule {
        bool (*applies)(const Manifest&, const Circumstances&);
        Kind kind;
        const char* reason; ///< {0} is the announced version, {1} the running one.
    };

    /// The first one that applies decides.
    constexpr std::array rules {
        Rule { [](const Manifest& manifest, const Circumstances& here) {
                  return manifest.issued.time_since_epoch().count() < here.notes.newestIssued;
              },
            Kind::Refused, "the manifest of {0} is older than one that was seen before" },
        Rule { [](const Manifest& manifest, const Circumstances& here) {
                  return manifest.expires <= here.now;
              },
            Kind::Refused, "the manifest of {0} has expired" },
        Rule { [](const Manifest& manifest, const Circumstances& here) {
                  return manifest.version == here.running;
              },
            Kind::UpToDate, "" },
        Rule { [](const Manifest& manifest, const Circumstances& here) {
                  return manifest.version < here.running;
              },
            Kind::Refused, "{0} is older than {1}, which runs" },
        Rule { [](const Manifest& manifest, const Circumstances& here) {
                  return here.notes.rolledBack.contains(manifest.version);
              },
            Kind::Refused, "{0} did not work here and was rolled back" },
        Rule { [](const Manifest& manifest, const Circumstances& here) {
                  return manifest.minimumSystem > here.system;
              },
            Kind::Refused, "{0} needs a newer system" },
        Rule { [](const Manifest& manifest, const Circumstances&) {
                  return manifest.size == 0 || manifest.size > largestArchive;
              },
            Kind::Refused, "the archive of {0} has an impossible size" },
        Rule { [](const Manifest&, const Circumstances&) { return true; }, Kind::Newer, "" },
    };

} // namespace

UpdateVerdict judge(const UpdateManifest& manifest, const UpdateCircumstances& here)
{
    for (const auto& rule : rules) {
        if (rule.applies(manifest, here))
            return { rule.kind,
                fmt::format(
                    fmt::runtime(rule.reason), manifest.version.text(), here.running.text()) };
    }
    return { Kind::Refused, "no rule applies" };
}

} // namespace quillox
