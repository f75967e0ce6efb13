#pragma once

#include "ports/SystemLog.h"

#include <mutex>
#include <string>
#include <vector>

namespace quillox {

class FakeSystemLog final : public SystemLog {
public:
    void write(std::string_view line) override
    {
        const std::lock_guard lock(m_mutex);
        m_lines.emplace_back(line);
    }

    std::vector<std::string> lines() const
    {
        const std::lock_guard lock(m_mutex);
        return m_lines;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines;
};

} // namespace quillox
