#pragma once

#include <string_view>

namespace quillox {

/// For what the operator cannot act on. Any thread.
class SystemLog {
public:
    virtual ~SystemLog() = default;

    /// One line, without its end, which starts with the product's name and a colon.
    virtual void write(std::string_view line) = 0;
};

} // namespace quillox
