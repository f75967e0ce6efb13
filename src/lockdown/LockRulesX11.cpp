#include "lockdown/LockRules.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace quillox {

namespace {

    using Facts = LockFacts;
    using State = LockFinding::State;
    using Grab = X11Facts::KeyboardGrab;

    constexpr std::string_view dedicatedX11
        = "# /usr/share/xsessions/quillox.desktop\n"
          "[Desktop Entry]\nType=Application\nName=Quillox\nExec=quillox";
    constexpr std::string_view xorgSwitches
        = "# /etc/X11/xorg.conf.d/90-quillox.conf\n"
          "Section \"ServerFlags\"\n    Option \"DontVTSwitch\" \"true\"\n"
          "    Option \"DontZap\" \"true\"\nEndSection";

    std::string windowManager(const Facts& facts)
    {
        return facts.x11.windowManager.empty() ? "It gives no name" : facts.x11.windowManager;
    }

    std::string otherClients(const Facts& facts)
    {
        if (!facts.x11.otherClients || facts.x11.otherClients->empty())
            return "not known";
        return fmt::format("{}", fmt::join(*facts.x11.otherClients, ", "));
    }

    std::string serverKeys(const Facts& facts)
    {
        return fmt::format("{}", facts.x11.serverKeys.value_or(0));
    }

    const LockRule rules[] {
        { "input", State::Closed, [](const Facts& f) { return f.serverReadsInput == true; },
            "The display server has the keyboard for itself", "{} reads the input devices itself.",
            {}, {}, serverName },
        { "input", State::Gap, [](const Facts& f) { return f.serverReadsInput == false; },
            "Keys come to the display server through another program",
            "{} has no input device of the kernel: it is nested, remote or virtual. What the "
            "program around it does with keys is not checked.",
            "Run the session on the machine's own screen, as a session of its own:", dedicatedX11,
            serverName },
        { "input", State::NotChecked, always, "Who has the keyboard was not checked",
            "The display server did not tell of its devices.",
            "Start the server and Quillox as one user, in a session of its own:", dedicatedX11 },
        { "keyboard", State::Closed,
            [](const Facts& f) {
                return isKioskKnownSealed(f) && f.x11.keyboardGrab == Grab::Held;
            },
            "The keyboard is locked",
            "Quillox is sealed and the keyboard is held; no program's shortcut fires. (The server "
            "does not tell who holds it.)" },
        { "keyboard", State::Blocking,
            [](const Facts& f) {
                return isKioskKnownSealed(f) && f.x11.keyboardGrab == Grab::Free;
            },
            "Quillox is sealed, but does not hold the keyboard",
            "The keyboard was free for another program to take. Desktop shortcuts fire.",
            "Unseal and seal again. If that does not help, end the program and start it anew:",
            "kill {}", [](const Facts& f) { return std::to_string(f.kioskProcess); } },
        { "keyboard", State::Closed,
            [](const Facts& f) { return f.x11.keyboardGrab == Grab::Free; },
            "The keyboard can be locked",
            "The server gave the whole keyboard for a moment. While Quillox has it, no program's "
            "shortcut fires." },
        { "keyboard", State::NotChecked,
            [](const Facts& f) {
                return f.kioskProcess != 0 && !f.isKioskSealed && f.x11.keyboardGrab == Grab::Held;
            },
            "Whether Quillox holds the keyboard was not checked",
            "It is held. Quillox runs, but the server does not tell which windows are its own, so "
            "it is not known whether it is sealed.",
            "Unseal it and run the report again:", "quillox doctor" },
        { "keyboard", State::Blocking,
            [](const Facts& f) { return f.x11.keyboardGrab == Grab::Held; },
            "Another program holds the keyboard",
            "Quillox takes it as soon as that program lets go; until then there is no lock. The "
            "server does not tell which one it is. Connected are: {}.",
            "Close the menu or screen lock that is open, or end the program:", "kill PROCESS",
            otherClients },
        { "keyboard", State::Blocking,
            [](const Facts& f) { return f.x11.keyboardGrab == Grab::Refused; },
            "The server does not give the keyboard away",
            "Its input extension is missing or refuses this program.",
            "Start the server with its extensions, and without an untrusted authorisation:",
            "xauth generate \"$DISPLAY\" . trusted" },
        { "keyboard", State::NotChecked, always,
            "Whether the keyboard can be locked was not checked", "The trial was not made.",
            "Run the report again:", "quillox doctor" },
        { "terminals", State::NotChecked, [](const Facts& f) { return !f.x11.serverKeys; },
            "The X server's own keys were not checked",
            "The key map could not be read; Ctrl+Alt+F1 to F12 may switch the terminal.",
            "Switch them off in the server's configuration:", xorgSwitches },
        { "terminals", State::Closed, [](const Facts& f) { return f.x11.serverKeys == 0; },
            "The X server acts on no keys of its own",
            "No key of its map switches the terminal, ends it or breaks a grab." },
        { "terminals", State::Gap, isKioskKnownSealed,
            "Quillox is sealed, but the X server still acts on keys",
            "Its key maps have {} actions that switch the terminal, end the server or break a "
            "grab.",
            "Switch them off in the server's configuration:", xorgSwitches, serverKeys },
        { "terminals", State::Closed,
            [](const Facts& f) { return f.x11.canChangeServerKeys == true; },
            "The X server's own keys can be switched off",
            "{} actions of its key maps switch the terminal, end the server or break a grab. "
            "Quillox changes them while it is sealed; the server accepted a trial change.",
            {}, {}, serverKeys },
        { "terminals", State::Gap, always, "The X server's own keys get through",
            "{} actions of its key maps switch the terminal, end the server or break a grab, and "
            "the server did not accept a change of them.",
            "Switch them off in the server's configuration:", xorgSwitches, serverKeys },
        { "desktop", State::Gap, [](const Facts& f) { return f.x11.hasWindowManager; },
            "A window manager runs",
            "{}. Its desktop is what a visitor finds when Quillox ends, and its shortcuts fire at "
            "any moment at which the keyboard is not held.",
            "Give Quillox a session of its own, without a window manager:", dedicatedX11,
            windowManager },
        { "desktop", State::Closed, always, "There is no window manager",
            "Nothing but Quillox answers to shortcuts here." },
        { "clients", State::NotChecked, [](const Facts& f) { return !f.x11.otherClients; },
            "Other programs on this display were not checked",
            "The server has no list of them. Each could read every key and close any window.",
            "Give Quillox a session of its own:", dedicatedX11 },
        { "clients", State::Gap, [](const Facts& f) { return !f.x11.otherClients->empty(); },
            "Other programs are connected to this display",
            "Each could read every key, also locked ones, type, and close windows: {}.",
            "Give Quillox a session of its own, which starts nothing else:", dedicatedX11,
            otherClients },
        { "clients", State::Closed, always, "No other program is connected to this display",
            "The server's list names none." },
        { "access", State::Gap, [](const Facts& f) { return f.x11.hasAccessControl == false; },
            "Anybody on this machine may connect to this display",
            "The server does not ask who connects.",
            "Switch its access control on, and start the server without -ac:", "xhost -" },
        { "access", State::NotChecked, [](const Facts& f) { return !f.x11.hasAccessControl; },
            "Who may connect to this display was not checked", "The server did not tell.",
            "Switch its access control on:", "xhost -" },
        { "access", State::Closed, always, "The server asks who connects to this display",
            "Its access control is on." },
        { "displaySleep", State::Closed,
            [](const Facts& f) { return f.x11.canSuspendScreenSaver && f.x11.hasPowerSaving; },
            "The screen stays on",
            "The server lets its screen saver and power saving be suspended while sealed." },
        { "displaySleep", State::Closed, [](const Facts& f) { return f.x11.canSuspendScreenSaver; },
            "The screen stays on",
            "The server lets its screen saver be suspended while sealed, and has no power saving "
            "(DPMS)." },
        { "displaySleep", State::Gap, always, "The screen may go dark",
            "The server has no extension by which its screen saver can be suspended.",
            "Switch it off when the session starts:", "xset s off" },
    };

} // namespace

std::span<const LockRule> x11LockRules()
{
    return rules;
}

} // namespace quillox
