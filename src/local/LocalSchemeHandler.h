#pragma once

#include "ports/SchemeHandler.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillox {

class FileTypes;

/// Serves a website that lives in a folder, as a web server would. Nothing outside the folder can
/// be reached through it. Every request looks at the files afresh. Main thread only.
class LocalSchemeHandler final : public SchemeHandler {
public:
    static constexpr auto scheme = "qxlocal";

    /// `root` is the absolute path of the folder. The ports must outlive this object.
    LocalSchemeHandler(const std::string& root, const SiteFiles&, const FileTypes&);

    /// 206 for the one byte range that is asked for, 404 for what is not there, otherwise 200 with
    /// the whole file. A folder stands for its index.html; a name without extension that is not
    /// there for the root's index.html, so that the routes of single-page applications work.
    std::optional<SchemeResponse> answer(const SchemeRequest&) override;

private:
    /// Both inclusive, counted in bytes from 0.
    struct Range {
        std::uint64_t start;
        std::uint64_t end;
    };

    std::optional<std::string> nameBelowRoot(const std::string& path) const;
    std::string servedName(const std::string& name) const;
    std::string mime(const std::string& extension) const;
    static std::optional<Range> parseRange(std::string_view header, std::uint64_t size);

    std::string m_root;
    const SiteFiles& m_files;
    const FileTypes& m_types;
};

} // namespace quillox
