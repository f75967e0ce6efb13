#pragma once

#include "ports/SiteFiles.h"

namespace quillox {

/// The kernel resolves every name beneath the folder, so that nothing that is swapped meanwhile
/// leads out. Nothing but a regular file is ever opened, since opening a device or a pipe may
/// already have consequences.
class SiteFilesLinux final : public SiteFiles {
public:
    Kind kind(const std::string& root, const std::string& name) const override;
    std::unique_ptr<SiteFile> open(const std::string& root, const std::string& name) const override;
};

} // namespace quillox
