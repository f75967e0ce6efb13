#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// What became of a file operation. Any thread.
struct FileResult {
    /// Empty when it succeeded; otherwise names the file and says why, in one line.
    std::string reason;

    explicit operator bool() const { return reason.empty(); }
};

struct FileContents {
    /// None when the file is missing or cannot be read.
    std::optional<std::string> text;
    /// Whether nothing exists under that name; `reason` then says so.
    bool isMissing = false;
    std::string reason;
};

enum class FilePermissions {
    /// Those of the file that is replaced; a new one is only its owner's.
    kept,
    /// Its owner's only.
    ownerOnly,
};

/// Where writing to `path` ends up: symbolic links at its end are followed, also one whose target
/// does not exist yet.
std::string resolvedPath(const std::string& path);

/// Reads a regular file of up to so many bytes.
FileContents readFile(const std::string& path, std::size_t largest = std::size_t { 16 } << 20);

/// Replaces a regular file, or makes it. A reader sees the old or the new contents, whole, also
/// after a crash or a power cut; on success they are on the disk. Symbolic links and, for root, the
/// owner are kept. On failure the old contents stay, save for one case: when only the directory
/// could not be flushed, the new ones are there but may not survive a power cut.
FileResult replaceFile(
    const std::string& path, std::string_view contents, FilePermissions = FilePermissions::kept);

/// The same with contents that are too large to be held in memory; `write` is called once, unless
/// it fails before.
FileResult replaceFile(const std::string& path, const std::function<void(std::ostream&)>& write);

/// Gives a damaged file another name, which is told in `newName`; never replaces anything. Of a
/// symbolic link it is what it names that moves, so that the link serves its successor.
FileResult setFileAside(const std::string& path, std::string& newName);

/// Removes what replacements of `path` left behind when they were killed. Only for who makes sure
/// that none is under way.
void removeUnfinishedReplacements(const std::string& path);

/// Makes the directory and its parents, each only its owner's.
FileResult makeDirectories(const std::string& path);

} // namespace quillox
