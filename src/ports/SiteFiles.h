#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace quillox {

/// An open regular file, closed with its destruction. Any thread, one at a time.
class SiteFile {
public:
    virtual ~SiteFile() = default;

    /// In bytes, as it was when the file was opened.
    virtual std::uint64_t size() const = 0;

    /// Fills `buffer` from `offset` on and returns the number of bytes, which may be fewer than
    /// asked for; 0 at the end of the file, none when it cannot be read. Waits for the disk.
    virtual std::optional<std::size_t> read(
        std::uint64_t offset, std::span<std::byte> buffer) const = 0;
};

/// What lies below a folder, and nothing else: a link that leads out of the folder is never
/// followed to what it names. `root` is an absolute path, and itself may be a link; `name` is
/// relative to it, without "." and ".."; an empty one is the folder. Main thread only; never waits
/// for anything but the disk.
class SiteFiles {
public:
    enum class Kind {
        Missing, ///< Also what cannot be looked at.
        Directory,
        Other, ///< A file, a special file, a link that leads out.
    };

    virtual ~SiteFiles() = default;

    virtual Kind kind(const std::string& root, const std::string& name) const = 0;

    /// None for everything but a regular file that can be read.
    virtual std::unique_ptr<SiteFile> open(
        const std::string& root, const std::string& name) const = 0;
};

} // namespace quillox
