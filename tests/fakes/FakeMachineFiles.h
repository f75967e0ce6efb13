#pragma once

#include "ports/MachineFiles.h"

#include <map>
#include <set>

namespace quillox {

/// A machine of files in memory, with accounts, and a disk that can fail.
class FakeMachineFiles final : public MachineFiles {
public:
    Contents read(const std::string& path) const override
    {
        if (!root && rootOnly.contains(path))
            return { {}, path + ": Permission denied" };
        const auto found = files.find(path);
        return { found == files.end() ? std::nullopt : std::optional(found->second) };
    }
    bool exists(const std::string& path) const override { return files.contains(path); }
    std::optional<std::string> linkTarget(const std::string& path) const override
    {
        const auto found = links.find(path);
        return found == links.end() ? std::nullopt : std::optional(found->second);
    }
    std::string write(
        const std::string& path, std::string_view text, const Attributes& attributes) override
    {
        if (failing.contains(path))
            return path + ": No space left on device";
        if (!files.contains(path))
            made[path] = attributes;
        files[path] = text;
        ++writes;
        return {};
    }
    std::string remove(const std::string& path) override
    {
        if (failing.contains(path))
            return path + ": Read-only file system";
        files.erase(path);
        ++writes;
        return {};
    }
    std::optional<unsigned> userNumber(const std::string& name) const override
    {
        const auto found = users.find(name);
        return found == users.end() ? std::nullopt : std::optional(found->second);
    }
    bool isRoot() const override { return root; }

    std::map<std::string, std::string> files;
    std::map<std::string, std::string> links;
    std::map<std::string, unsigned> users { { "root", 0 }, { "_greetd", 112 }, { "kiosk", 1001 },
        { "second", 1002 }, { "nobody", 65534 } };
    /// Paths whose changes fail, and those that only root can read.
    std::set<std::string> failing, rootOnly;
    /// What new files got.
    std::map<std::string, Attributes> made;
    bool root = true;
    int writes = 0;
};

} // namespace quillox
