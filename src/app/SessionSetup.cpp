#include "app/SessionSetup.h"

#include "app/ConfigurationLines.h"

#include <fmt/format.h>

#include <algorithm>

namespace quillox {

namespace {

    using Kind = DisplayManager::Kind;

    constexpr std::string_view keptSuffix = ".before-quillox";
    constexpr std::string_view ownHeading
        = "# From \"quillox setup-session\"; \"quillox setup-session --undo\" removes it.\n";

    std::string fileName(std::string_view path)
    {
        return std::string(path.substr(path.rfind('/') + 1));
    }

    ManagedFile shared(std::string path, decltype(ManagedFile::wanted) wanted)
    {
        auto kept = path + std::string(keptSuffix);
        return { std::move(path), std::move(kept), std::move(wanted) };
    }

    // In both folders the name that sorts last has the last word, save for the old single file.

    std::vector<ManagedFile> lightFiles(const std::string& user)
    {
        const auto own = [user](std::string_view, DedicatedSession session) {
            return fmt::format("{}[Seat:*]\nautologin-user={}\nautologin-user-timeout=0\n"
                               "autologin-session={}\n",
                ownHeading, user, entryOf(session).name);
        };
        const auto quiet = [](std::string_view earlier, DedicatedSession) {
            return withoutKeys(earlier, "Seat",
                { "autologin-user", "autologin-guest", "autologin-user-timeout",
                    "autologin-session", "autologin-in-background" });
        };
        return { shared("/etc/lightdm/lightdm.conf", quiet),
            { "/etc/lightdm/lightdm.conf.d/zz-quillox.conf", {}, own } };
    }

    std::vector<ManagedFile> sddmFiles(const std::string& user)
    {
        const auto own = [user](std::string_view, DedicatedSession session) {
            return fmt::format("{}[Autologin]\nUser={}\nSession={}\nRelogin=true\n", ownHeading,
                user, fileName(entryOf(session).path));
        };
        const auto quiet = [](std::string_view earlier, DedicatedSession) {
            return withoutKeys(earlier, "Autologin", { "User", "Session", "Relogin" });
        };
        return { shared("/etc/sddm.conf", quiet), { "/etc/sddm.conf.d/zz-quillox.conf", {}, own } };
    }

    std::vector<ManagedFile> gdmFiles(const std::string& user)
    {
        const auto choice = [](std::string_view earlier, DedicatedSession session) {
            const bool isWayland = session == DedicatedSession::wayland;
            return withLines(earlier, "User",
                { { "Session", fmt::format("Session={}", entryOf(session).name) },
                    { "SessionType", isWayland ? "SessionType=wayland" : "SessionType=x11" } });
        };
        const auto login = [user](std::string_view earlier, DedicatedSession) {
            return withLines(earlier, "daemon",
                { { "AutomaticLoginEnable", "AutomaticLoginEnable=true" },
                    { "AutomaticLogin", "AutomaticLogin=" + user } });
        };
        // Not beside it: the accounts service removes files there that name no account. The
        // account comes first, since that service reads it again when the other file changes.
        const std::string accounts = "/var/lib/AccountsService/";
        return { { accounts + "users/" + user, accounts + user + std::string(keptSuffix), choice,
                     0600 },
            shared("/etc/gdm3/daemon.conf", login) };
    }

    /// The default session is the one that comes back after its end. An initial session would go
    /// before it once.
    std::vector<ManagedFile> greetdFiles(
        const std::string& user, const std::vector<std::string>& commands)
    {
        const auto login = [user, commands](std::string_view earlier, DedicatedSession session) {
            const std::vector<ConfigurationLine> lines {
                { "command",
                    fmt::format("command = \"{}\"", commands[static_cast<std::size_t>(session)]) },
                { "user", fmt::format("user = \"{}\"", user) }
            };
            auto text = earlier.empty() ? "[terminal]\nvt = 7\n" : std::string(earlier);
            text = withLines(text, "default_session", lines);
            return hasSection(text, "initial_session") ? withLines(text, "initial_session", lines)
                                                       : text;
        };
        return { shared("/etc/greetd/config.toml", login) };
    }

} // namespace

const std::vector<DisplayManager>& displayManagers()
{
    static const std::vector<DisplayManager> all {
        { Kind::LightDM, "LightDM", "/usr/sbin/lightdm", { "lightdm.service" },
            "When the session ends, LightDM shows its login screen." },
        { Kind::Gdm, "GDM", "/usr/sbin/gdm3", { "gdm.service", "gdm3.service" },
            "When the session ends, GDM shows its login screen." },
        { Kind::Sddm, "SDDM", "/usr/bin/sddm", { "sddm.service" },
            "When the session ends, SDDM starts it again." },
        { Kind::Greetd, "greetd", "/usr/sbin/greetd", { "greetd.service" },
            "When the session ends, greetd starts it again." },
    };
    return all;
}

const DedicatedSessionEntry& entryOf(DedicatedSession session)
{
    static const DedicatedSessionEntry wayland { "quillox-wayland",
        "/usr/share/wayland-sessions/quillox-wayland.desktop",
        { { "/usr/bin/cage", "cage" }, { "/usr/bin/Xwayland", "xwayland" } } };
    static const DedicatedSessionEntry x11 { "quillox-x11",
        "/usr/share/xsessions/quillox-x11.desktop", { { "/usr/bin/Xorg", "xserver-xorg" } } };
    return session == DedicatedSession::wayland ? wayland : x11;
}

const DisplayManager* activeDisplayManager(const MachineFiles& files, std::string& reason)
{
    const auto& all = displayManagers();
    // Debian's managers read the second of these to know whether it is their turn; greetd does not.
    const auto link = files.linkTarget("/etc/systemd/system/display-manager.service");
    const auto choice = files.read("/etc/X11/default-display-manager").text.value_or("");
    const auto chosen = choice.substr(0, choice.find_first_of(" \t\r\n"));
    std::vector<const DisplayManager*> found;
    for (const auto& manager : all) {
        const bool isNamed = link
            ? std::ranges::find(manager.units, fileName(*link)) != manager.units.end()
            : chosen.empty() || chosen == manager.program;
        if (isNamed && files.exists(std::string(manager.program)))
            found.push_back(&manager);
    }
    if (found.size() == 1)
        return found.front();
    reason = "there is no display manager to log anybody in; install one, for example: sudo apt "
             "install lightdm";
    if (found.size() > 1) {
        reason = "several display managers are installed and none is chosen; choose one with "
                 "dpkg-reconfigure";
    } else if (link || !chosen.empty()) {
        reason = fmt::format("this machine logs in by {}, which is not installed or not one that "
                             "this command knows: LightDM, GDM, SDDM, greetd",
            link ? fileName(*link) : chosen);
    }
    return nullptr;
}

std::vector<ManagedFile> managedFiles(
    DisplayManager::Kind kind, const std::string& user, const std::vector<std::string>& commands)
{
    switch (kind) {
    case Kind::LightDM:
        return lightFiles(user);
    case Kind::Gdm:
        return gdmFiles(user);
    case Kind::Sddm:
        return sddmFiles(user);
    case Kind::Greetd:
        return greetdFiles(user, commands);
    }
    return {};
}

ManagedFile managedServerFile()
{
    const auto own = [](std::string_view, DedicatedSession session) {
        return session == DedicatedSession::wayland
            ? std::string()
            : fmt::format("{}# It holds for every X session of this machine.\n"
                          "Section \"ServerFlags\"\n    Option \"DontVTSwitch\" \"true\"\n"
                          "    Option \"DontZap\" \"true\"\nEndSection\n",
                ownHeading);
    };
    return { "/etc/X11/xorg.conf.d/90-quillox.conf", {}, own };
}

} // namespace quillox
