#include "fakes/FakeDefaultsStore.h"

#include <nlohmann/json.hpp>

namespace quillox {

std::optional<std::string> FakeDefaultsStore::data(std::string_view key) const
{
    for (const auto* source : { &m_values, &m_provided }) {
        if (const auto found = source->find(key); found != source->end())
            return found->second;
    }
    return std::nullopt;
}

void FakeDefaultsStore::setData(std::string_view key, std::string_view text)
{
    const auto json = nlohmann::ordered_json::parse(text, nullptr, false);
    if (json.is_discarded())
        return;
    m_values.insert_or_assign(std::string(key), json.dump());
    m_saves.emplace_back(key);
}

bool FakeDefaultsStore::boolean(std::string_view key) const
{
    return data(key) == "true";
}

void FakeDefaultsStore::setBoolean(std::string_view key, bool value)
{
    setData(key, value ? "true" : "false");
}

void FakeDefaultsStore::provide(std::string_view key, std::string_view json)
{
    m_provided.insert_or_assign(std::string(key), std::string(json));
}

} // namespace quillox
