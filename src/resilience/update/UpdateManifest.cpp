#include "resilience/update/UpdateManifest.h"

#include "resilience/update/Hexadecimal.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace quillox {

namespace {

    using Json = nlohmann::json;

    constexpr std::size_t signatureBytes = 64;
    constexpr std::size_t hashBytes = 32;
    constexpr std::size_t longestFileName = 128;
    constexpr auto latestTime = std::int64_t { 253'402'300'800 }; // The year 10000.

    bool read(const Json& json, std::string& value)
    {
        if (!json.is_string())
            return false;
        value = json.get<std::string>();
        return true;
    }

    bool read(const Json& json, std::uint64_t& value)
    {
        if (!json.is_number_unsigned())
            return false;
        value = json.get<std::uint64_t>();
        return true;
    }

    bool read(const Json& json, Version& value)
    {
        std::string text;
        const auto version = read(json, text) ? Version::parse(text) : std::nullopt;
        value = version.value_or(Version {});
        return version.has_value();
    }

    bool read(const Json& json, UpdateManifest::Time& value)
    {
        std::uint64_t seconds = 0;
        if (!read(json, seconds) || seconds > static_cast<std::uint64_t>(latestTime))
            return false;
        value = UpdateManifest::Time(std::chrono::seconds(seconds));
        return true;
    }

    /// One that means the same in a path and in an address, and no hidden file.
    bool isPlainFileName(std::string_view name)
    {
        const auto isPlain = [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
                || c == '-' || c == '_' || c == '.';
        };
        return !name.empty() && name.size() <= longestFileName && name[0] != '.'
            && std::ranges::all_of(name, isPlain);
    }

    template <typename Value> bool take(const Json& object, const char* key, Value& value)
    {
        const auto found = object.find(key);
        return found != object.end() && read(*found, value);
    }

} // namespace

std::optional<UpdateManifest> UpdateManifest::parse(std::string_view json)
{
    constexpr std::size_t fields = 7;
    const auto object = Json::parse(json, nullptr, false);
    UpdateManifest manifest;
    const bool isWhole = object.is_object() && object.size() == fields
        && take(object, "version", manifest.version) && take(object, "file", manifest.file)
        && take(object, "size", manifest.size) && take(object, "sha256", manifest.sha256)
        && take(object, "minimumSystem", manifest.minimumSystem)
        && take(object, "issued", manifest.issued) && take(object, "expires", manifest.expires);
    if (!isWhole || !isPlainFileName(manifest.file)
        || !bytesFromHexadecimal(manifest.sha256, hashBytes))
        return std::nullopt;
    return manifest;
}

std::optional<SignedManifest> SignedManifest::parse(std::string_view text)
{
    constexpr auto signatureEnd = format.size() + 2 * signatureBytes;
    if (text.size() > largestSize || !text.starts_with(format) || text.size() <= signatureEnd
        || text[signatureEnd] != '\n')
        return std::nullopt;
    const auto digits = text.substr(format.size(), 2 * signatureBytes);
    auto signature = bytesFromHexadecimal(digits, signatureBytes);
    if (!signature)
        return std::nullopt;
    std::string signedBytes(format);
    signedBytes += text.substr(signatureEnd + 1);
    return SignedManifest { std::move(*signature), std::move(signedBytes) };
}

} // namespace quillox
