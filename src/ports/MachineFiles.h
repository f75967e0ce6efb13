#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillox {

/// The files of the machine itself, which are root's to change, and its accounts. Paths are
/// absolute. Main thread only; waits for the disk.
class MachineFiles {
public:
    struct Contents {
        /// None when the file is missing or cannot be read.
        std::optional<std::string> text;
        /// Why it cannot be read, in one line; empty when it is missing, or was read.
        std::string failure {};
    };

    /// What a file gets that did not exist before.
    struct Attributes {
        unsigned mode = 0644;
        /// When not empty, the file whose mode and owner it gets instead.
        std::string sameAs {};

        bool operator==(const Attributes&) const = default;
    };

    virtual ~MachineFiles() = default;

    virtual Contents read(const std::string& path) const = 0;

    /// Of files and folders alike; what cannot be looked at does not exist.
    virtual bool exists(const std::string& path) const = 0;

    /// Where a symbolic link leads, as it is written in it; none when it is not one.
    virtual std::optional<std::string> linkTarget(const std::string& path) const = 0;

    /// Makes the file, with the folders above it that are missing, or replaces it as a whole; then
    /// it keeps its mode and owner. Empty when it is on the disk; otherwise why not, in one line,
    /// and the file is what it was.
    virtual std::string write(const std::string& path, std::string_view text, const Attributes&)
        = 0;

    /// Empty for success, else why not, in one line.
    virtual std::string remove(const std::string& path) = 0;

    /// The number of the account with exactly this name.
    virtual std::optional<unsigned> userNumber(const std::string& name) const = 0;

    /// Whether this process may change such files.
    virtual bool isRoot() const = 0;
};

} // namespace quillox
