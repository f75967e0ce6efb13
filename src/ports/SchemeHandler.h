#pragma once

#include "ports/SiteFiles.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillox {

/// What a page asks of a private scheme.
struct SchemeRequest {
    std::string url; ///< As the page has it; empty when the engine has none.
    std::optional<std::string> range; ///< The text of the Range header.
};

struct SchemeResponse {
    using Headers = std::vector<std::pair<std::string, std::string>>;

    unsigned status = 404;
    Headers headers; ///< All of them, in order; the content's type and length are among them.

    /// The body is `length` bytes of `file` from `offset` on; without a file it is empty. It ends
    /// early when the file has become shorter meanwhile.
    std::shared_ptr<const SiteFile> file;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

/// Answers the requests for one private scheme. Main thread only.
class SchemeHandler {
public:
    virtual ~SchemeHandler() = default;

    /// None fails the request as one for a bad address.
    virtual std::optional<SchemeResponse> answer(const SchemeRequest&) = 0;
};

} // namespace quillox
