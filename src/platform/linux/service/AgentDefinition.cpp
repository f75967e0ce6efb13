#include "platform/linux/service/AgentDefinition.h"

#include "platform/linux/system/AtomicFile.h"
#include "platform/linux/system/GlibOwner.h"
#include "platform/linux/update/VersionFolders.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>

namespace quillox {

namespace {

    constexpr std::string_view placeOfExecutable = "@QUILLOX_EXECUTABLE@";
    constexpr std::string_view mark = "# Written by Quillox, which removes it again.\n";
    constexpr auto entryGroup = "Desktop Entry";

    struct KeyFileFree {
        void operator()(GKeyFile* file) const { g_key_file_unref(file); }
    };
    using KeyFileOwner = std::unique_ptr<GKeyFile, KeyFileFree>;

    std::string prefixed(std::string_view text, std::string_view special, char prefix)
    {
        std::string result;
        for (const auto character : text) {
            if (special.find(character) != std::string_view::npos)
                result += prefix;
            result += character;
        }
        return result;
    }

    bool isPathWithout(std::string_view excluded, const std::string& path)
    {
        return path.starts_with('/') && std::ranges::none_of(path, [excluded](char character) {
            const auto code = static_cast<unsigned char>(character);
            return code < 0x20 || code == 0x7f || excluded.find(character) != excluded.npos;
        });
    }

    std::string folderFromEnvironment(const char* name, const std::string& fallback)
    {
        const auto* folder = std::getenv(name);
        return folder && *folder == '/' ? folder : fallback;
    }

} // namespace

AgentPlaces AgentPlaces::ofThisProcess()
{
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error).string();
    return { executable,
        folderFromEnvironment("XDG_CONFIG_HOME", std::string(g_get_home_dir()) + "/.config"),
        folderFromEnvironment("XDG_RUNTIME_DIR", fmt::format("/run/user/{}", ::geteuid())),
        launcherOf(executable) };
}

std::string AgentPlaces::launcherOf(const std::string& executable)
{
    const auto version = std::filesystem::path(executable).parent_path();
    const VersionFolders folders(version.parent_path().parent_path().string());
    const bool isOneVersion = version.parent_path() == folders.versionsFolder()
        && ::access(folders.launcher().c_str(), X_OK) == 0;
    return isOneVersion ? folders.launcher() : "";
}

UnitDefinition findUnitDefinition(const AgentPlaces& places, const std::string& unit)
{
    const auto folder = std::filesystem::path(places.executable).parent_path();
    const auto prefix = folder.parent_path();
    const auto installed = prefix / "lib/systemd/user" / unit;
    std::error_code error;
    if (std::filesystem::is_regular_file(installed, error))
        return { installed.string(), {}, {} };
    for (const auto& place : { prefix / "share/quillox", folder / "resources", folder }) {
        const auto definition = readFile((place / (unit + ".in")).string());
        if (definition.isMissing)
            continue;
        if (!definition.text)
            return { {}, {}, definition.reason };
        if (auto text = unitText(*definition.text, places.program()))
            return { {}, std::move(*text), {} };
        return { {}, {}, "no unit can start " + places.program() };
    }
    return { {}, {}, fmt::format("there is no {} beside {}", unit, places.executable) };
}

std::optional<std::string> unitText(std::string_view definition, const std::string& executable)
{
    const auto place = definition.find(placeOfExecutable);
    if (place == std::string_view::npos || !isPathWithout("\"'\\", executable))
        return std::nullopt;
    // The colon keeps dollar signs from being taken for variables.
    const auto command = fmt::format(":\"{}\"", prefixed(executable, "%", '%'));
    std::string text(mark);
    text += definition;
    return text.replace(mark.size() + place, placeOfExecutable.size(), command);
}

bool isWrittenHere(std::string_view unitText)
{
    return unitText.starts_with(mark);
}

std::optional<std::string> autostartEntry(const std::string& executable)
{
    // These two mean something else in the place of a program, or each desktop has its own idea.
    if (!isPathWithout("%=", executable))
        return std::nullopt;
    const auto command = fmt::format("\"{}\" --keep-alive", prefixed(executable, "\"`$\\", '\\'));
    const KeyFileOwner file(g_key_file_new());
    const auto set = [&file](const char* key, const char* value) {
        g_key_file_set_string(file.get(), entryGroup, key, value);
    };
    set("Type", "Application");
    set("Name", "Quillox");
    set("Comment", "Seals one website into a locked full screen");
    set("Exec", command.c_str());
    set("NoDisplay", "true");
    set("X-GNOME-Autostart-enabled", "true");
    return GTextOwner(g_key_file_to_data(file.get(), nullptr, nullptr)).get();
}

bool isSwitchedOn(const std::string& autostartEntry)
{
    const KeyFileOwner file(g_key_file_new());
    if (!g_key_file_load_from_data(
            file.get(), autostartEntry.data(), autostartEntry.size(), G_KEY_FILE_NONE, nullptr))
        return false;
    const auto says = [&file](const char* key, bool fallback) {
        GError* error = nullptr;
        const bool value = g_key_file_get_boolean(file.get(), entryGroup, key, &error);
        return GErrorOwner(error) ? fallback : value;
    };
    return !says("Hidden", false) && says("X-GNOME-Autostart-enabled", true);
}

} // namespace quillox
