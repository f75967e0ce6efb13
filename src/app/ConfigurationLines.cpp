#include "app/ConfigurationLines.h"

#include <algorithm>

namespace quillox {

namespace {

    struct Line {
        /// With its end.
        std::string_view text;
        /// In which it stands; a heading stands in its own.
        std::string_view section;
        /// Empty when it gives no key a value.
        std::string_view key;
        bool isHeading = false;
    };

    std::string_view trimmed(std::string_view text)
    {
        constexpr std::string_view space = " \t\r\n";
        const auto begin = text.find_first_not_of(space);
        if (begin == std::string_view::npos)
            return {};
        return text.substr(begin, text.find_last_not_of(space) - begin + 1);
    }

    std::vector<Line> parsed(std::string_view text)
    {
        std::vector<Line> lines;
        std::string_view section;
        while (!text.empty()) {
            const auto end = text.find('\n');
            const auto line = text.substr(0, end == std::string_view::npos ? end : end + 1);
            text.remove_prefix(line.size());
            const auto content = trimmed(line);
            const auto closing = content.find(']');
            const bool isHeading = content.starts_with('[') && closing != std::string_view::npos;
            if (isHeading)
                section = trimmed(content.substr(1, closing - 1));
            const bool isComment = content.starts_with('#') || content.starts_with(';');
            const auto equals = isHeading || isComment ? std::string_view::npos : content.find('=');
            const auto key = equals == std::string_view::npos ? std::string_view {}
                                                              : trimmed(content.substr(0, equals));
            lines.push_back({ line, section, key, isHeading });
        }
        return lines;
    }

    std::string_view lineEnd(std::string_view text)
    {
        const auto first = text.find('\n');
        const bool isTwo = first != std::string_view::npos && first > 0 && text[first - 1] == '\r';
        return isTwo ? "\r\n" : "\n";
    }

} // namespace

std::string withLines(
    std::string_view text, std::string_view section, const std::vector<ConfigurationLine>& wanted)
{
    const auto lines = parsed(text);
    const auto end = lineEnd(text);
    const auto isMissing = [&](const ConfigurationLine& line) {
        return std::ranges::none_of(
            lines, [&](const Line& old) { return old.section == section && old.key == line.key; });
    };
    std::string result;
    const auto append = [&](std::string_view line) {
        if (!result.empty() && result.back() != '\n')
            result += end;
        result.append(line).append(end);
    };
    const auto appendMissing = [&] {
        for (const auto& line : wanted) {
            if (isMissing(line))
                append(line.text);
        }
    };
    std::vector<std::string_view> written;
    bool isSectionSeen = false;
    for (const auto& old : lines) {
        const auto line = std::ranges::find(wanted, old.key, &ConfigurationLine::key);
        if (old.section != section || line == wanted.end()) {
            result += old.text;
        } else if (std::ranges::find(written, old.key) == written.end()) {
            append(line->text);
            written.push_back(old.key);
        }
        if (old.isHeading && old.section == section && !isSectionSeen) {
            isSectionSeen = true;
            appendMissing();
        }
    }
    if (!isSectionSeen) {
        if (!result.empty())
            append("");
        append("[" + std::string(section) + "]");
        appendMissing();
    }
    return result;
}

std::string withoutKeys(
    std::string_view text, std::string_view sectionStart, const std::vector<std::string_view>& keys)
{
    std::string result;
    for (const auto& line : parsed(text)) {
        if (line.section.starts_with(sectionStart)
            && std::ranges::find(keys, line.key) != keys.end())
            result += '#';
        result += line.text;
    }
    return result;
}

std::string_view valueOf(std::string_view text, std::string_view section, std::string_view key)
{
    std::string_view value;
    for (const auto& line : parsed(text)) {
        if (line.section == section && line.key == key)
            value = trimmed(line.text.substr(line.text.find('=') + 1));
    }
    return value;
}

bool hasSection(std::string_view text, std::string_view section)
{
    return std::ranges::any_of(
        parsed(text), [&](const Line& line) { return line.isHeading && line.section == section; });
}

} // namespace quillox
