#pragma once

#include <atomic>
#include <optional>
#include <string>

namespace quillox {

/// Unpacks a gzipped tar archive into a folder that is empty and ours alone; all of it is on the
/// disk afterwards. Files become readable by all and writable by their owner, executable if the
/// archive says so. The failure is a clause for the log; what was unpacked until then stays.
/// Any thread.
///
/// Only plain files and folders are taken. Links, devices and anything else make it fail, as do
/// names that are absolute, lead out of the folder or come twice, and contents without measure.
std::optional<std::string> unpackArchive(
    const std::string& archive, const std::string& folder, const std::atomic<bool>& isCancelled);

} // namespace quillox
