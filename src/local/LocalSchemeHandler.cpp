#include "local/LocalSchemeHandler.h"

#include "config/PercentEscapes.h"
#include "ports/FileTypes.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>

namespace quillox {

namespace {

    constexpr auto indexName = "index.html";

    struct MimeRow {
        std::string_view extension;
        const char* type;
    };

    constexpr std::array<MimeRow, 31> mimeTable { {
        { "html", "text/html; charset=utf-8" },
        { "htm", "text/html; charset=utf-8" },
        { "css", "text/css; charset=utf-8" },
        { "js", "text/javascript; charset=utf-8" },
        { "mjs", "text/javascript; charset=utf-8" },
        { "json", "application/json; charset=utf-8" },
        { "map", "application/json" },
        { "svg", "image/svg+xml" },
        { "png", "image/png" },
        { "jpg", "image/jpeg" },
        { "jpeg", "image/jpeg" },
        { "gif", "image/gif" },
        { "webp", "image/webp" },
        { "avif", "image/avif" },
        { "ico", "image/x-icon" },
        { "woff", "font/woff" },
        { "woff2", "font/woff2" },
        { "ttf", "font/ttf" },
        { "otf", "font/otf" },
        { "mp4", "video/mp4" },
        { "m4v", "video/mp4" },
        { "webm", "video/webm" },
        { "mov", "video/quicktime" },
        { "mp3", "audio/mpeg" },
        { "wav", "audio/wav" },
        { "ogg", "audio/ogg" },
        { "m4a", "audio/mp4" },
        { "wasm", "application/wasm" },
        { "xml", "application/xml" },
        { "txt", "text/plain; charset=utf-8" },
        { "pdf", "application/pdf" },
    } };

    /// Absolute, without "." and ".." and doubled or trailing slashes.
    std::string standardized(const std::string& path)
    {
        auto text = std::filesystem::path(path).lexically_normal().string();
        while (text.size() > 1 && text.ends_with('/'))
            text.pop_back();
        return text;
    }

    /// Without its dot; empty when the name has none.
    std::string extensionOf(const std::string& name)
    {
        const auto extension = std::filesystem::path(name).extension().string();
        return extension.empty() ? extension : extension.substr(1);
    }

    /// Decoded once; none when `url` is no address.
    std::optional<std::string> pathOf(std::string_view url)
    {
        const auto colon = url.find(':');
        if (colon == std::string_view::npos || colon == 0)
            return std::nullopt;
        auto path = url.substr(colon + 1);
        path = path.substr(0, path.find_first_of("?#"));
        if (path.starts_with("//"))
            path.remove_prefix(std::min(path.find('/', 2), path.size()));
        return percentDecoded(path).value_or(std::string(path));
    }

    /// Digits only.
    std::optional<std::uint64_t> decimal(std::string_view text)
    {
        std::uint64_t value = 0;
        const auto* const end = text.data() + text.size();
        const auto [rest, error] = std::from_chars(text.data(), end, value);
        if (error != std::errc() || rest != end)
            return std::nullopt;
        return value;
    }

    SchemeResponse response(unsigned status, const std::string& mime, std::uint64_t length)
    {
        return { .status = status,
            .headers = { { "Content-Type", mime }, { "Content-Length", fmt::to_string(length) },
                { "Access-Control-Allow-Origin", "*" }, { "Cache-Control", "no-cache" } },
            .file = nullptr,
            .offset = 0,
            .length = length };
    }

} // namespace

LocalSchemeHandler::LocalSchemeHandler(
    const std::string& root, const SiteFiles& files, const FileTypes& types)
    : m_root(standardized(root))
    , m_files(files)
    , m_types(types)
{
}

std::optional<SchemeResponse> LocalSchemeHandler::answer(const SchemeRequest& request)
{
    const auto path = pathOf(request.url);
    if (!path)
        return std::nullopt;
    // Decoded a second time: sites made for this rely on addresses that were escaped twice.
    const auto name = nameBelowRoot(percentDecoded(*path).value_or(*path));
    if (!name)
        return response(404, "text/plain", 0);
    const auto served = servedName(*name);
    std::shared_ptr<const SiteFile> file = m_files.open(m_root, served);
    if (!file)
        return response(404, "text/plain", 0);

    const auto size = file->size();
    const auto type = mime(extensionOf(served));
    const auto range = request.range ? parseRange(*request.range, size) : std::nullopt;
    auto answer
        = range ? response(206, type, range->end - range->start + 1) : response(200, type, size);
    if (range) {
        answer.offset = range->start;
        answer.headers.emplace_back(
            "Content-Range", fmt::format("bytes {}-{}/{}", range->start, range->end, size));
    }
    answer.headers.emplace_back("Accept-Ranges", "bytes");
    answer.file = std::move(file);
    return answer;
}

std::optional<std::string> LocalSchemeHandler::nameBelowRoot(const std::string& path) const
{
    const bool isRoot = path.empty() || path == "/";
    const auto file = standardized(m_root + "/" + (isRoot ? indexName : path));
    if (file == m_root)
        return std::string();
    const auto inside = m_root + "/";
    if (!file.starts_with(inside))
        return std::nullopt;
    return file.substr(inside.size());
}

std::string LocalSchemeHandler::servedName(const std::string& name) const
{
    switch (m_files.kind(m_root, name)) {
    case SiteFiles::Kind::Directory:
        return name.empty() ? indexName : name + "/" + indexName;
    case SiteFiles::Kind::Missing:
        return extensionOf(name).empty() ? indexName : name;
    case SiteFiles::Kind::Other:
        break;
    }
    return name;
}

std::string LocalSchemeHandler::mime(const std::string& extension) const
{
    auto key = extension;
    std::ranges::transform(key, key.begin(),
        [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const auto* const row = std::ranges::find(mimeTable, key, &MimeRow::extension);
    if (row != mimeTable.end())
        return row->type;
    return m_types.mimeType(key).value_or("application/octet-stream");
}

std::optional<LocalSchemeHandler::Range> LocalSchemeHandler::parseRange(
    std::string_view header, std::uint64_t size)
{
    constexpr std::string_view unit = "bytes=";
    if (size < 1 || !header.starts_with(unit))
        return std::nullopt;
    const auto text = header.substr(unit.size());
    if (std::ranges::count(text, '-') != 1)
        return std::nullopt;
    const auto dash = text.find('-');
    const auto first = text.substr(0, dash);
    const auto last = decimal(text.substr(dash + 1));
    if (first.empty()) {
        if (!last || *last < 1)
            return std::nullopt;
        return Range { size - std::min(*last, size), size - 1 };
    }
    const auto start = decimal(first);
    if (!start || *start >= size)
        return std::nullopt;
    const auto end = std::min(last.value_or(size - 1), size - 1);
    if (end < *start)
        return std::nullopt;
    return Range { *start, end };
}

} // namespace quillox
