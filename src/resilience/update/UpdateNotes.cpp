#include "resilience/update/UpdateNotes.h"

#include <charconv>
#include <fmt/format.h>
#include <map>
#include <vector>

namespace quillox {

namespace {

    std::vector<std::string_view> split(std::string_view text, char separator)
    {
        std::vector<std::string_view> parts;
        while (!text.empty()) {
            const auto end = std::min(text.find(separator), text.size());
            if (end > 0)
                parts.push_back(text.substr(0, end));
            text.remove_prefix(std::min(end + 1, text.size()));
        }
        return parts;
    }

    std::int64_t numberFrom(std::string_view text)
    {
        std::int64_t number = 0;
        std::from_chars(text.data(), text.data() + text.size(), number);
        return std::max(number, std::int64_t { 0 });
    }

} // namespace

UpdateNotes UpdateNotes::parse(std::string_view text)
{
    std::map<std::string_view, std::string_view> values;
    for (const auto line : split(text, '\n')) {
        const auto sign = std::min(line.find('='), line.size() - 1);
        values[line.substr(0, sign)] = line.substr(sign + 1);
    }
    UpdateNotes notes;
    notes.staged = Version::parse(values["staged"]);
    const auto version = Version::parse(values["trial"]);
    const auto previous = Version::parse(values["previous"]);
    if (version && previous)
        notes.trial = Trial { *version, *previous, static_cast<int>(numberFrom(values["starts"])) };
    for (const auto entry : split(values["rolledBack"], ' ')) {
        if (const auto refused = Version::parse(entry))
            notes.rolledBack.insert(*refused);
    }
    notes.newestIssued = numberFrom(values["newestIssued"]);
    return notes;
}

std::string UpdateNotes::text() const
{
    std::string text = fmt::format("newestIssued={}\n", newestIssued);
    if (staged)
        text += fmt::format("staged={}\n", staged->text());
    if (trial)
        text += fmt::format("trial={}\nprevious={}\nstarts={}\n", trial->version.text(),
            trial->previous.text(), trial->starts);
    if (!rolledBack.empty()) {
        text += "rolledBack=";
        for (const auto& version : rolledBack)
            text += version.text() + ' ';
        text += '\n';
    }
    return text;
}

} // namespace quillox
