#include "lockdown/LockRules.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace quillox {

namespace {

    using Facts = LockFacts;
    using State = LockFinding::State;

    constexpr std::string_view dedicatedWayland
        = "# /usr/share/wayland-sessions/quillox.desktop\n"
          "[Desktop Entry]\nType=Application\nName=Quillox\nExec=cage -- quillox --keep-alive";

    bool isServer(const Facts& facts, std::initializer_list<std::string_view> names)
    {
        return std::ranges::find(names, facts.displayServer) != names.end();
    }

    bool isGnome(const Facts& facts)
    {
        return isServer(facts, { "gnome-shell", "mutter" });
    }

    std::string bindings(const Facts& facts)
    {
        return fmt::format("{}", fmt::join(*facts.wayland.uninhibitableBindings, "\n"));
    }

    const LockRule rules[] {
        { "input", State::Closed, [](const Facts& f) { return f.serverReadsInput == true; },
            "The compositor has the keyboard for itself", "{} reads the input devices itself.", {},
            {}, serverName },
        { "input", State::Gap, [](const Facts& f) { return f.serverReadsInput == false; },
            "Keys come to the compositor through another program",
            "{} does not read the input devices itself: it is nested, remote or virtual. What the "
            "program around it does with keys is not checked.",
            "Run the session on the machine's own screen, as a session of its own:",
            dedicatedWayland, serverName },
        { "input", State::NotChecked, always, "Who has the keyboard was not checked",
            "The open devices of {} could not be looked at.",
            "Start the compositor and Quillox as one user, in a session of its own:",
            dedicatedWayland, serverName },
        { "keyboard", State::Closed, [](const Facts& f) { return f.wayland.isSingleWindow; },
            "The compositor acts on no shortcuts",
            "{} shows a single window and has no key bindings.", {}, {}, serverName },
        { "keyboard", State::Blocking,
            [](const Facts& f) { return !f.wayland.offersShortcutsInhibitor; },
            "The compositor does not let its shortcuts be inhibited",
            "{} offers no shortcuts inhibitor; its own key bindings fire over a full screen.",
            "Install cage, and give Quillox a session of its own:", dedicatedWayland, serverName },
        { "keyboard", State::NotChecked, isGnome, "GNOME asks before it inhibits its shortcuts",
            "A question appears when Quillox seals for the first time; the answer is remembered. "
            "What was answered was not checked.",
            "Seal once and choose Allow. To be asked again after a wrong answer:",
            "gdbus call --session --dest org.freedesktop.impl.portal.PermissionStore --object-path "
            "/org/freedesktop/impl/portal/PermissionStore --method "
            "org.freedesktop.impl.portal.PermissionStore.Delete gnome shortcuts-inhibitor" },
        { "keyboard", State::Closed, [](const Facts& f) { return isServer(f, { "sway" }); },
            "The compositor inhibits its shortcuts when asked",
            "{} was not made to inhibit anything for this report; a refusal would be logged when "
            "Quillox seals.",
            {}, {}, serverName },
        { "keyboard", State::NotChecked, always, "The compositor offers to inhibit its shortcuts",
            "{} may ask the visitor first, or refuse. It was not tried, since a question might "
            "have appeared. When Quillox seals, a refusal is logged; nothing is shown.",
            "Seal once, answer if it asks, and look for a refusal in the log:",
            "journalctl -b | grep Quillox:", serverName },
        { "bindings", State::Closed,
            [](const Facts& f) {
                return f.wayland.isSingleWindow
                    || (f.wayland.uninhibitableBindings
                        && f.wayland.uninhibitableBindings->empty());
            },
            "No binding passes the inhibitor",
            "None was found in the compositor's configuration. Bindings that were added while it "
            "ran are not seen." },
        { "bindings", State::Gap,
            [](const Facts& f) { return isGnome(f) && f.wayland.uninhibitableBindings; },
            "A key takes GNOME's shortcuts back", "Its bindings, which no inhibitor stops: {}",
            "Leave the setting empty:",
            "gsettings set org.gnome.mutter.wayland.keybindings restore-shortcuts \"[]\"",
            bindings },
        { "bindings", State::Gap,
            [](const Facts& f) { return f.wayland.uninhibitableBindings.has_value(); },
            "Bindings pass the inhibitor",
            "They are marked to fire although shortcuts are inhibited, or come from no keyboard.",
            "Remove them from the compositor's configuration, then reload it (swaymsg reload):",
            "{}", bindings },
        { "bindings", State::NotChecked, always,
            "Bindings that pass the inhibitor were not checked",
            "The configuration of {} could not be read.",
            "For sway, run the report inside its session. For others, a session of its own has "
            "none:",
            dedicatedWayland, serverName },
        { "terminals", State::Closed,
            [](const Facts& f) {
                return f.serverReadsInput == false || f.wayland.switchesTerminals == false;
            },
            "No key switches the virtual terminal",
            "{} has no terminal to leave, or no key that leaves it.", {}, {}, serverName },
        { "terminals", State::NotChecked,
            [](const Facts& f) {
                return isServer(f, { "weston" }) || !f.wayland.switchesTerminals;
            },
            "Terminal switching was not checked",
            "Ctrl+Alt+F1 to F12 may lead to a login prompt. {} does not say.",
            "Keep logins off the other terminals, and leave none to switch to:",
            "# /etc/systemd/logind.conf.d/90-quillox.conf\n[Login]\nNAutoVTs=0\nReserveVT=0",
            serverName },
        { "terminals", State::Gap, [](const Facts& f) { return f.wayland.isSingleWindow; },
            "Ctrl+Alt+F1 to F12 switch the virtual terminal",
            "{} was started with -s, which allows it.",
            "Start it without -s:", "cage -- quillox --keep-alive", serverName },
        { "terminals", State::Gap, isGnome, "Ctrl+Alt+F1 to F12 switch the virtual terminal",
            "GNOME acts on them although shortcuts are inhibited.", "Leave the settings empty:",
            "for number in 1 2 3 4 5 6 7 8 9 10 11 12; do\n"
            "    gsettings set org.gnome.mutter.wayland.keybindings switch-to-session-$number "
            "\"[]\"\ndone" },
        { "terminals", State::Gap, [](const Facts& f) { return isServer(f, { "sway" }); },
            "Ctrl+Alt+F1 to F12 switch the virtual terminal",
            "sway acts on them although shortcuts are inhibited.",
            "Take these keys out of the layout, in sway's configuration:",
            "input type:keyboard xkb_options srvrkeys:none" },
        { "terminals", State::Gap, always, "Ctrl+Alt+F1 to F12 switch the virtual terminal",
            "The keyboard layout that {} uses has keys for it.",
            "Take these keys out of the machine's layout, whose name localectl tells, then log in "
            "anew:",
            "localectl set-x11-keymap LAYOUT \"\" \"\" srvrkeys:none", serverName },
        { "desktop", State::Closed, [](const Facts& f) { return f.wayland.isSingleWindow; },
            "There is no desktop", "{} shows nothing but Quillox, and ends with it.", {}, {},
            serverName },
        { "desktop", State::Gap, always, "There is a desktop behind Quillox",
            "Windows of other programs can come before it under {}, and the desktop is what a "
            "visitor finds when Quillox ends.",
            "Install cage, and give Quillox a session of its own:", dedicatedWayland, serverName },
        { "displaySleep", State::Closed,
            [](const Facts& f) { return f.wayland.offersIdleInhibitor; }, "The screen stays on",
            "The compositor offers to be told that the session is not idle." },
        { "displaySleep", State::Gap, [](const Facts& f) { return isServer(f, { "weston" }); },
            "The screen may go dark", "This weston has no idle inhibitor.",
            "Switch its timer off, in weston.ini:", "[core]\nidle-time=0" },
        { "displaySleep", State::Gap, always, "The screen may go dark",
            "{} offers no idle inhibitor.",
            "Install cage, which blanks nothing by itself:", dedicatedWayland, serverName },
    };

} // namespace

std::span<const LockRule> waylandLockRules()
{
    return rules;
}

} // namespace quillox
