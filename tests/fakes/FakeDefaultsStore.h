#pragma once

#include "ports/DefaultsStore.h"

#include <map>
#include <vector>

namespace quillox {

/// Keeps what the core writes, which is valid JSON.
class FakeDefaultsStore final : public DefaultsStore {
public:
    std::vector<std::string> saves; ///< The keys that were set, in order.

    std::optional<std::string> data(std::string_view key) const override
    {
        const auto found = m_values.find(key);
        return found == m_values.end() ? std::nullopt : std::optional(found->second);
    }
    void setData(std::string_view key, std::string_view json) override
    {
        m_values.insert_or_assign(std::string(key), std::string(json));
        saves.emplace_back(key);
    }
    bool boolean(std::string_view key) const override { return data(key) == "true"; }
    void setBoolean(std::string_view key, bool value) override
    {
        setData(key, value ? "true" : "false");
    }

private:
    std::map<std::string, std::string, std::less<>> m_values;
};

} // namespace quillox
