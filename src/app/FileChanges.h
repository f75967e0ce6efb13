#pragma once

#include "ports/MachineFiles.h"

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// What is to become of one file.
struct FileChange {
    std::string path;
    /// What it holds now; none when it does not exist.
    std::optional<std::string> before;
    /// What it is to hold; none when it is to go.
    std::optional<std::string> after;
    /// For when it has to be made, by the change or by taking it back. With `sameAs` it is a copy
    /// of that file.
    MachineFiles::Attributes attributes {};

    bool operator==(const FileChange&) const = default;
};

/// The change for people: a line that names the file, and below it the lines that come and go, with
/// a neighbour each. A copy is told without its lines.
std::string changeText(const FileChange&);

/// Makes the changes in their order. When one fails, those before it are taken back, the last one
/// first. Empty for success, else what went wrong, in one line.
std::string applyChanges(const std::vector<FileChange>&, MachineFiles&);

} // namespace quillox
