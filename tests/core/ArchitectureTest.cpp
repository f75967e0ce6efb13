#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;

/// What each folder of the core may include from; standard headers, fmt and the JSON parser are
/// free to all.
const std::map<std::string, std::set<std::string>> allowedFolders {
    { "support", { "support" } },
    { "ports", { "ports", "support" } },
    { "config", { "config", "ports", "support" } },
    { "usage", { "usage", "config", "ports", "support" } },
    { "lockdown", { "lockdown", "config", "ports", "support" } },
    { "local", { "local", "config", "ports", "support" } },
    { "resilience", { "resilience", "config", "ports", "support" } },
    { "kiosk", { "kiosk", "usage", "lockdown", "local", "config", "ports", "support" } },
    { "ui",
        { "ui", "app", "kiosk", "usage", "lockdown", "resilience", "config", "ports", "support" } },
    { "app",
        { "app", "kiosk", "usage", "lockdown", "local", "resilience", "config", "ports",
            "support" } },
};

const std::set<std::string> allowedLibraries { "fmt", "nlohmann" };
/// The one header that has no folder of its own: Unicode tables and nothing else.
const std::string unicodeTables = "utf8proc.h";

/// The name between the quotes or brackets of an include line; empty for every other line.
std::string includedName(const std::string& line)
{
    const auto start = line.find("#include");
    if (start == std::string::npos)
        return {};
    const auto open = line.find_first_of("\"<", start);
    const auto close = line.find_first_of("\">", open + 1);
    return line.substr(open + 1, close - open - 1);
}

std::string complaintAbout(const std::string& folder, const std::string& line)
{
    const auto name = includedName(line);
    const auto slash = name.find('/');
    if (name.empty() || name == unicodeTables)
        return {};
    if (slash == std::string::npos)
        return name.ends_with(".h") || name.ends_with(".hpp") ? name + " belongs to the platform"
                                                              : "";
    const auto from = name.substr(0, slash);
    const bool isAllowed
        = allowedFolders.at(folder).contains(from) || allowedLibraries.contains(from);
    return isAllowed ? "" : name + " is out of reach for " + folder;
}

TEST(ArchitectureTest, NoFolderReachesUpwardsOrForThePlatform)
{
    int files = 0;
    for (const auto& folder : fs::directory_iterator(QUILLOX_SOURCE_DIR)) {
        const auto name = folder.path().filename().string();
        if (!folder.is_directory() || name == "platform")
            continue;
        ASSERT_TRUE(allowedFolders.contains(name)) << name;
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            std::ifstream file(entry.path());
            ++files;
            for (std::string line; std::getline(file, line);)
                EXPECT_EQ(complaintAbout(name, line), "") << entry.path();
        }
    }
    EXPECT_GT(files, 20);
    for (const auto* offender : { "<gtk/gtk.h>", "<glib.h>", "\"kiosk/Displays.h\"" })
        EXPECT_NE(complaintAbout("config", std::string("#include ") + offender), "");
}

} // namespace
