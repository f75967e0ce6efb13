#include "app/ManagedFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace quillox {

namespace {

    constexpr std::array allSessions { DedicatedSession::wayland, DedicatedSession::x11 };

    bool isOneOf(std::string_view text, std::string_view earlier, const ManagedFile& file)
    {
        return std::ranges::any_of(allSessions,
            [&](DedicatedSession session) { return file.wanted(earlier, session) == text; });
    }

    /// Both are read before anything is decided.
    struct Stored {
        MachineFiles::Contents file;
        MachineFiles::Contents kept;
        FilePlan failure;

        Stored(const ManagedFile& managed, const MachineFiles& files)
            : file(files.read(managed.path))
            , kept(managed.kept.empty() ? MachineFiles::Contents {} : files.read(managed.kept))
        {
            const auto& reason = file.failure.empty() ? kept.failure : file.failure;
            failure.isHidden = !reason.empty() && !files.isRoot();
            if (!reason.empty() && files.isRoot())
                failure.objection = "cannot read " + reason;
        }

        bool isReadable() const { return file.failure.empty() && kept.failure.empty(); }
    };

    FilePlan changedSince(const ManagedFile& file)
    {
        const auto advice = file.kept.empty()
            ? std::string()
            : fmt::format("; what it held before is in {}: put both in order by hand", file.kept);
        return { {},
            fmt::format(
                "{} was changed since this command wrote it, or is set up for another user, "
                "and stays as it is{}",
                file.path, advice) };
    }

    /// Where it is not wanted it goes, unless somebody has made it theirs.
    FilePlan planOfOwn(const ManagedFile& file, const std::optional<std::string>& current,
        const std::string& wanted)
    {
        if (wanted.empty() && !isOneOf(current.value_or(""), "", file))
            return {};
        const auto after = wanted.empty() ? std::nullopt : std::optional(wanted);
        return { { { file.path, current, after, { file.modeWhenNew, {} } } } };
    }

} // namespace

FilePlan planToSetUp(const ManagedFile& file, DedicatedSession session, const MachineFiles& files)
{
    const Stored stored(file, files);
    if (!stored.isReadable())
        return stored.failure;
    const auto current = stored.file.text.value_or("");
    const auto earlier = stored.kept.text.value_or(current);
    const auto wanted = file.wanted(earlier, session);
    if (current == wanted)
        return {};
    if (file.kept.empty())
        return planOfOwn(file, stored.file.text, wanted);
    FilePlan plan;
    if (stored.kept.text) {
        if (current != earlier && !isOneOf(current, earlier, file))
            return changedSince(file);
    } else if (stored.file.text && !isOneOf(current, "", file)) {
        // One of this command's making began as none; there is nothing to keep.
        plan.changes.push_back({ file.kept, {}, current, { 0600, file.path } });
    }
    plan.changes.push_back({ file.path, stored.file.text, wanted, { file.modeWhenNew, {} } });
    return plan;
}

FilePlan planToUndo(const ManagedFile& file, const MachineFiles& files)
{
    const Stored stored(file, files);
    if (!stored.isReadable())
        return stored.failure;
    const auto& current = stored.file.text;
    const auto& kept = stored.kept.text;
    if (kept) {
        if (!current || (*current != *kept && !isOneOf(*current, *kept, file)))
            return changedSince(file);
        FilePlan plan;
        if (*current != *kept)
            plan.changes.push_back({ file.path, current, kept });
        plan.changes.push_back({ file.kept, kept, {}, { 0600, file.path } });
        return plan;
    }
    if (!current || current->empty())
        return {};
    if (isOneOf(*current, "", file))
        return { { { file.path, current, {}, { file.modeWhenNew, {} } } } };
    if (file.kept.empty())
        return changedSince(file);
    const bool isSetUp
        = isOneOf(*current, *current, file) && !file.wanted("", DedicatedSession::wayland).empty();
    if (!isSetUp)
        return {};
    return { {},
        fmt::format("{} holds what this command would write, but there is no {} to go back to; "
                    "change it by hand",
            file.path, file.kept) };
}

} // namespace quillox
