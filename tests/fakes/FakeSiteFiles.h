#pragma once

#include "ports/FileTypes.h"
#include "ports/SchemeHandler.h"

#include <algorithm>
#include <cstring>
#include <map>

namespace quillox {

/// Files with their contents, by absolute path. A folder is there when something is below it.
class FakeSiteFiles final : public SiteFiles {
public:
    void add(const std::string& path, const std::string& contents) { m_contents[path] = contents; }

    Kind kind(const std::string& root, const std::string& name) const override
    {
        const auto path = root + "/" + name;
        if (m_contents.contains(path))
            return Kind::Other;
        const auto below = m_contents.lower_bound(path + "/");
        const bool isFolder = below != m_contents.end() && below->first.starts_with(path + "/");
        return isFolder ? Kind::Directory : Kind::Missing;
    }

    std::unique_ptr<SiteFile> open(const std::string& root, const std::string& name) const override
    {
        const auto found = m_contents.find(root + "/" + name);
        return found == m_contents.end() ? nullptr : std::make_unique<File>(found->second);
    }

    /// What a page receives of an answer.
    static std::string body(const SchemeResponse& response)
    {
        std::string bytes(response.file ? response.length : 0, '\0');
        if (response.file)
            bytes.resize(
                response.file->read(response.offset, std::as_writable_bytes(std::span(bytes)))
                    .value());
        return bytes;
    }

private:
    struct File final : SiteFile {
        explicit File(std::string text)
            : contents(std::move(text))
        {
        }
        std::uint64_t size() const override { return contents.size(); }
        std::optional<std::size_t> read(
            std::uint64_t offset, std::span<std::byte> buffer) const override
        {
            const auto rest = std::string_view(contents).substr(std::min(offset, size()));
            const auto count = std::min(rest.size(), buffer.size());
            std::memcpy(buffer.data(), rest.data(), count);
            return count;
        }
        std::string contents;
    };

    std::map<std::string, std::string> m_contents;
};

struct FakeFileTypes final : FileTypes {
    std::map<std::string, std::string> types;

    std::optional<std::string> mimeType(const std::string& extension) const override
    {
        const auto found = types.find(extension);
        return found == types.end() ? std::nullopt : std::optional(found->second);
    }
};

} // namespace quillox
