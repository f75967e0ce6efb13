#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

namespace quillox {

/// The one file in which the statistics are kept. Main thread only, but for what is said of
/// `Producer`.
class UsageFile {
public:
    /// Writes the whole contents. It is called on another thread, at most once, and destroyed there
    /// or by the caller.
    using Producer = std::function<void(std::ostream&)>;

    virtual ~UsageFile() = default;

    /// None when there is no file, or it cannot be read, which is logged. Waits for the disk.
    virtual std::optional<std::string> read() = 0;

    /// What is there is not what we wrote: before the next write it gets a new name, and the log
    /// says so.
    virtual void setAside() = 0;

    /// Replaces the file as a whole, by and by; a reader sees the old or the new contents, also
    /// after a crash. Of several writes that wait for their turn only the last is made. A failure
    /// is logged, once per reason.
    virtual void write(Producer) = 0;

    /// Whether what was last to be written is not in the file, and not on its way there either.
    virtual bool hasFailed() const = 0;
};

} // namespace quillox
