#pragma once

#include "contract/SavedFiles.h"
#include "platform/linux/update/VersionFolders.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <string>

namespace quillox {

inline std::string contentsOf(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

/// An installation that runs 1.0.0, with small programs for its versions: shell scripts that add
/// their version to a trace, do what the test says, and end.
class UpdateBed {
public:
    UpdateBed()
    {
        makeProgram(folder.path / "tree-1.0.0", "1.0.0");
        release("install --version 1.0.0 --launcher " QUILLOX_LAUNCHER " {0}/tree-1.0.0 {0}/app");
    }

    /// Runs the tool with that command line, in which {0} is the folder of the bed.
    void release(const std::string& arguments, const std::string& environment = {}) const
    {
        const auto command = environment + " " QUILLOX_RELEASE " " + arguments;
        ASSERT_EQ(std::system(fmt::format(fmt::runtime(command), folder.path.string()).c_str()), 0)
            << command;
    }

    void makeProgram(const std::filesystem::path& tree, const std::string& version,
        const std::string& deed = "exit 0") const
    {
        const auto program = tree / "quillox";
        // So much beside it that it does not come in one piece.
        put(tree / "data/noise", noise());
        put(program,
            fmt::format("#!/bin/sh\nroot={}\necho {} >>{}\n{}\n", folders.root(), version,
                trace().string(), deed));
        std::filesystem::permissions(program, std::filesystem::perms(0755));
    }

    std::filesystem::path trace() const { return folder.path / "trace"; }

    /// Which programs ran, in order; from here on anew.
    std::string takeTrace() const
    {
        auto lines = contentsOf(trace());
        std::filesystem::remove(trace());
        std::replace(lines.begin(), lines.end(), '\n', ' ');
        return lines;
    }

    /// All that must stay as it is when an update is refused.
    std::map<std::string, std::string> versions() const
    {
        namespace fs = std::filesystem;
        std::map<std::string, std::string> found;
        found["current"] = fs::read_symlink(folder.path / "app/current").string();
        for (const auto& entry : fs::recursive_directory_iterator(folders.versionsFolder())) {
            // What was begun and not finished is under a name that nobody takes for a version.
            if (entry.is_regular_file() && entry.path().string().find("/.") == std::string::npos)
                found[entry.path().string()] = contentsOf(entry.path());
        }
        return found;
    }

    TemporaryFolder folder;
    VersionFolders folders { (folder.path / "app").string() };

private:
    static std::string noise()
    {
        std::minstd_rand random(7);
        std::string bytes(200'000, '\0');
        for (auto& byte : bytes)
            byte = static_cast<char>(random());
        return bytes;
    }
};

} // namespace quillox
