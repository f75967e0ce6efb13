#pragma once

#include "ports/DefaultsStore.h"

#include <map>
#include <vector>

namespace quillox {

class FakeDefaultsStore final : public DefaultsStore {
public:
    std::optional<std::string> data(std::string_view key) const override;
    void setData(std::string_view key, std::string_view json) override;
    bool boolean(std::string_view key) const override;
    void setBoolean(std::string_view key, bool value) override;

    /// What an administrator provides for the key.
    void provide(std::string_view key, std::string_view json);

    /// The keys that were set, in order.
    const std::vector<std::string>& saves() const { return m_saves; }

private:
    std::map<std::string, std::string, std::less<>> m_values;
    std::map<std::string, std::string, std::less<>> m_provided;
    std::vector<std::string> m_saves;
};

} // namespace quillox
