#pragma once

#include "ports/MachineFiles.h"

namespace quillox {

class MachineFilesLinux final : public MachineFiles {
public:
    /// Every path is taken to begin in that folder, which is not a part of what is told: another
    /// machine's root, for example. Accounts are this machine's all the same.
    explicit MachineFilesLinux(std::string root = {});

    Contents read(const std::string& path) const override;
    bool exists(const std::string& path) const override;
    std::optional<std::string> linkTarget(const std::string& path) const override;
    std::string write(const std::string& path, std::string_view text, const Attributes&) override;
    std::string remove(const std::string& path) override;
    std::optional<unsigned> userNumber(const std::string& name) const override;
    bool isRoot() const override;

private:
    std::string m_root;
};

} // namespace quillox
