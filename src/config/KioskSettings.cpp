#include "config/KioskSettings.h"

#include "config/DefaultsKeys.h"
#include "ports/DefaultsStore.h"
#include "ports/FileSystem.h"

namespace quillox {

namespace {

    std::string withoutTrailingSlashes(std::string path)
    {
        while (path.size() > 1 && path.ends_with('/'))
            path.pop_back();
        return path;
    }

    std::string lastPathComponent(const std::string& path)
    {
        const auto trimmed = withoutTrailingSlashes(path);
        const auto slash = trimmed.rfind('/');
        if (trimmed == "/" || slash == std::string::npos)
            return trimmed;
        return trimmed.substr(slash + 1);
    }

} // namespace

KioskSettings KioskSettings::load(const DefaultsStore& defaults)
{
    if (const auto json = defaults.data(kioskSettingsKey))
        return decoded(*json).value_or(KioskSettings {});
    return {};
}

void KioskSettings::save(DefaultsStore& defaults) const
{
    if (const auto json = encoded())
        defaults.setData(kioskSettingsKey, *json);
}

std::optional<std::string> KioskSettings::localRootURL(const FileSystem& files) const
{
    if (!isLocalSource() || !files.isDirectory(localPath))
        return std::nullopt;
    const auto folder = withoutTrailingSlashes(localPath);
    const auto entry = (folder == "/" ? folder : folder + "/") + localEntry;
    if (!files.exists(entry))
        return std::nullopt;
    return folder;
}

std::optional<Url> KioskSettings::kioskStartURL() const
{
    if (isLocalSource())
        return Url::fromComponents("qxlocal", "local", "/" + localEntry);
    return startURL();
}

bool KioskSettings::hasSource(const FileSystem& files) const
{
    return isLocalSource() ? localRootURL(files).has_value() : startURL().has_value();
}

std::string KioskSettings::usageSourceKey() const
{
    if (isLocalSource())
        return "local:" + lastPathComponent(localPath);
    if (const auto start = startURL())
        return start->host().value_or(url);
    return url;
}

std::optional<Url> KioskSettings::startURL() const
{
    const auto parsed = Url::parse(url);
    if (!parsed || !parsed->host())
        return std::nullopt;
    const auto scheme = parsed->lowercaseScheme();
    if (scheme != "http" && scheme != "https")
        return std::nullopt;
    return parsed;
}

} // namespace quillox
