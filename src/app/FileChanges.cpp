#include "app/FileChanges.h"

#include <fmt/format.h>

#include <algorithm>
#include <span>
#include <string_view>

namespace quillox {

namespace {

    struct DiffLine {
        char sign;
        std::string_view text;
    };

    std::vector<std::string_view> lines(std::string_view text)
    {
        std::vector<std::string_view> result;
        while (!text.empty()) {
            const auto length = std::min(text.find('\n'), text.size());
            result.push_back(text.substr(0, length));
            text.remove_prefix(std::min(length + 1, text.size()));
        }
        return result;
    }

    /// How many lines go and how many come until both texts agree again.
    std::pair<std::size_t, std::size_t> nextAgreement(
        std::span<const std::string_view> before, std::span<const std::string_view> after)
    {
        const auto total = before.size() + after.size();
        for (std::size_t distance = 1; distance < total; ++distance) {
            for (std::size_t gone = 0; gone <= distance; ++gone) {
                const auto come = distance - gone;
                if (gone < before.size() && come < after.size() && before[gone] == after[come])
                    return { gone, come };
            }
        }
        return { before.size(), after.size() };
    }

    std::vector<DiffLine> difference(
        std::span<const std::string_view> before, std::span<const std::string_view> after)
    {
        std::vector<DiffLine> result;
        const auto take
            = [&](char sign, std::span<const std::string_view>& from, std::size_t count) {
                  for (const auto line : from.first(count))
                      result.push_back({ sign, line });
                  from = from.subspan(count);
              };
        while (!before.empty() || !after.empty()) {
            if (!before.empty() && !after.empty() && before[0] == after[0]) {
                after = after.subspan(1);
                take(' ', before, 1);
                continue;
            }
            const auto [gone, come] = nextAgreement(before, after);
            take('-', before, gone);
            take('+', after, come);
        }
        return result;
    }

    /// What stands in a file must not steer the terminal.
    std::string forTerminal(std::string_view line)
    {
        if (line.ends_with('\r'))
            line.remove_suffix(1);
        std::string text(line);
        std::ranges::replace_if(
            text,
            [](char character) {
                return (static_cast<unsigned char>(character) < 0x20 && character != '\t')
                    || character == 0x7f;
            },
            '?');
        return text;
    }

    std::string differenceText(std::string_view before, std::string_view after)
    {
        const auto linesBefore = lines(before);
        const auto linesAfter = lines(after);
        const auto all = difference(linesBefore, linesAfter);
        const auto isChanged
            = [&](std::size_t index) { return index < all.size() && all[index].sign != ' '; };
        std::string text;
        bool isGap = false;
        for (std::size_t index = 0; index < all.size(); ++index) {
            const bool isNear
                = isChanged(index) || isChanged(index + 1) || (index > 0 && isChanged(index - 1));
            if (isNear && isGap)
                text += "  @@\n";
            isGap = !isNear;
            if (isNear)
                text += fmt::format("  {} {}\n", all[index].sign, forTerminal(all[index].text));
        }
        return text;
    }

    std::string makeTrue(MachineFiles& files, const std::string& path,
        const std::optional<std::string>& text, const MachineFiles::Attributes& attributes)
    {
        return text ? files.write(path, *text, attributes) : files.remove(path);
    }

} // namespace

std::string changeText(const FileChange& change)
{
    const auto& copied = change.attributes.sameAs;
    const auto difference = differenceText(change.before.value_or(""), change.after.value_or(""));
    if (!change.after && !copied.empty())
        return fmt::format("Remove {}, which {} is again.\n", change.path, copied);
    if (!change.after)
        return fmt::format("Remove {}:\n{}", change.path, difference);
    if (!change.before && !copied.empty())
        return fmt::format("New file {}: {} as it is now.\n", change.path, copied);
    return fmt::format(
        "{} {}:\n{}", change.before ? "Change" : "New file", change.path, difference);
}

std::string applyChanges(const std::vector<FileChange>& changes, MachineFiles& files)
{
    std::vector<const FileChange*> done;
    std::string failure;
    for (const auto& change : changes) {
        failure = makeTrue(files, change.path, change.after, change.attributes);
        if (!failure.empty())
            break;
        done.push_back(&change);
    }
    if (failure.empty())
        return {};
    std::string left;
    for (; !done.empty(); done.pop_back()) {
        const auto& change = *done.back();
        const auto reason = makeTrue(files, change.path, change.before, change.attributes);
        if (!reason.empty())
            left += fmt::format("{}{}", left.empty() ? "" : "; ", reason);
    }
    return left.empty()
        ? fmt::format("{}; what was already changed has been taken back", failure)
        : fmt::format(
            "{}; and what was already changed could not be taken back: {}", failure, left);
}

} // namespace quillox
