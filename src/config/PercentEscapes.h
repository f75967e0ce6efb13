#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// `text` with every escape replaced by its byte. None when an escape is broken or stands for a
/// zero, which would end the text for some readers.
std::optional<std::string> percentDecoded(std::string_view text);

} // namespace quillox
