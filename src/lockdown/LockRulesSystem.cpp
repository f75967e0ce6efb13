#include "lockdown/LockRules.h"

#include <algorithm>
#include <fmt/format.h>
#include <fmt/ranges.h>

namespace quillox {

namespace {

    using Facts = LockFacts;
    using State = LockFinding::State;

    // What kernel.sysrq permits, by bit; 1 permits everything.
    constexpr int sysrqEverything = 1;
    constexpr int sysrqKillsTerminal = 4;
    constexpr int sysrqMountsReadOnly = 32;
    constexpr int sysrqKillsProcesses = 64;
    constexpr int sysrqRestarts = 128;

    bool isSysrqHarmless(int value)
    {
        constexpr int harmful
            = sysrqKillsTerminal | sysrqMountsReadOnly | sysrqKillsProcesses | sysrqRestarts;
        return value != sysrqEverything && (value & harmful) == 0;
    }

    bool isRefused(const Facts& facts, std::string_view start)
    {
        return std::ranges::any_of(facts.login->refusedInhibitors,
            [=](const std::string& kind) { return kind.starts_with(start); });
    }

    std::string sysrq(const Facts& facts)
    {
        return std::to_string(facts.sysrq.value_or(0));
    }

    std::string keyActions(const Facts& facts)
    {
        return fmt::format("{}", fmt::join(facts.login->keyActions, ", "));
    }

    std::string idleAction(const Facts& facts)
    {
        return facts.login->idleAction;
    }

    std::string sandboxFailure(const Facts& facts)
    {
        return facts.sandboxFailure;
    }

    const LockRule rules[] {
        { "display", State::Blocking,
            [](const Facts& f) { return f.display == Facts::Display::Absent; },
            "There is no display to seal",
            "Neither DISPLAY nor WAYLAND_DISPLAY leads to one that this user may open.",
            "Run it inside the session, or name the session's display:",
            "DISPLAY=:0 quillox doctor\nWAYLAND_DISPLAY=wayland-0 quillox doctor" },
        { "display", State::Blocking,
            [](const Facts& f) { return f.display == Facts::Display::NotAnswering; },
            "The display does not answer",
            "It was silent for five seconds. It may hang, or a program keeps the whole X server to "
            "itself. Nothing else could be checked.",
            "Run the report again. If it stays so, end the session that hangs; its number is in "
            "the first column of the list:",
            "loginctl list-sessions\nloginctl terminate-session NUMBER" },
        { "display", State::Blocking, [](const Facts& f) { return f.x11.isXwayland; },
            "This X server is a guest of a Wayland compositor",
            "The compositor sees every key before this server does; nothing that is locked here "
            "holds.",
            "Let Quillox speak to the compositor:", "env -u GDK_BACKEND quillox" },
        { "display", State::Closed, always, "A display was found", "{}", {}, {},
            displayDescription },

        { "power", State::NotChecked, [](const Facts& f) { return !f.login; },
            "Power keys were not checked",
            "systemd-logind does not answer, so it is not known who acts on the power key, the "
            "reboot key, the sleep keys and the lid.",
            "Where acpid does, stop it; where firmware does, change it there:",
            "systemctl disable --now acpid.socket acpid.path acpid.service" },
        { "power", State::Closed, [](const Facts& f) { return f.login->keyActions.empty(); },
            "Power keys do nothing",
            "systemd-logind ignores the power, reboot and sleep keys and the lid." },
        { "power", State::Closed, [](const Facts& f) { return !isRefused(f, "handle-"); },
            "Power keys can be held back",
            "systemd-logind acts on them ({}), but gave the inhibitors that stop it. Holding the "
            "power key for seconds switches off in hardware.",
            {}, {}, keyActions },
        { "power", State::Gap, always, "Power keys get through",
            "systemd-logind acts on them ({}) and refused an inhibitor.",
            "Have it ignore them, then: systemctl kill -s HUP systemd-logind",
            "# /etc/systemd/logind.conf.d/90-quillox.conf\n[Login]\nHandlePowerKey=ignore\n"
            "HandlePowerKeyLongPress=ignore\nHandleRebootKey=ignore\n"
            "HandleRebootKeyLongPress=ignore\nHandleSuspendKey=ignore\n"
            "HandleSuspendKeyLongPress=ignore\nHandleHibernateKey=ignore\n"
            "HandleHibernateKeyLongPress=ignore\nHandleLidSwitch=ignore\n"
            "HandleLidSwitchExternalPower=ignore",
            keyActions },

        { "idle", State::NotChecked,
            [](const Facts& f) { return f.login && f.login->idleAction.empty(); },
            "What happens to an idle machine was not checked", "systemd-logind did not tell.",
            "Have it do nothing, then: systemctl kill -s HUP systemd-logind",
            "# /etc/systemd/logind.conf.d/90-quillox.conf\n[Login]\nIdleAction=ignore" },
        { "idle", State::Closed,
            [](const Facts& f) { return f.login && f.login->idleAction == "ignore"; },
            "An idle machine stays awake", "systemd-logind does nothing to an idle session." },
        { "idle", State::Closed, [](const Facts& f) { return f.login && !isRefused(f, "idle"); },
            "An idle machine can be kept awake",
            "systemd-logind would {} an idle session, but gave the inhibitor that stops it.", {},
            {}, idleAction },
        { "idle", State::Gap, [](const Facts& f) { return f.login.has_value(); },
            "An idle machine goes to sleep",
            "systemd-logind would {} an idle session and refused the inhibitor.",
            "Have it do nothing, then: systemctl kill -s HUP systemd-logind",
            "# /etc/systemd/logind.conf.d/90-quillox.conf\n[Login]\nIdleAction=ignore",
            idleAction },

        { "sysrq", State::NotChecked, [](const Facts& f) { return !f.sysrq; },
            "Magic SysRq keys were not checked", "The kernel's setting could not be read.",
            "Switch them off:",
            "echo 'kernel.sysrq = 0' > /etc/sysctl.d/90-quillox.conf\nsysctl --system" },
        { "sysrq", State::Closed, [](const Facts& f) { return isSysrqHarmless(*f.sysrq); },
            "Magic SysRq keys are restricted",
            "kernel.sysrq is {} (0 also where the kernel has none): they neither restart nor end "
            "anything.",
            {}, {}, sysrq },
        { "sysrq", State::Gap, always, "Magic SysRq keys get through",
            "kernel.sysrq is {}: Alt+SysRq with a letter restarts the machine or ends programs. "
            "The kernel acts on them before any lock.",
            "Switch them off:",
            "echo 'kernel.sysrq = 0' > /etc/sysctl.d/90-quillox.conf\nsysctl --system", sysrq },

        { "ctrlAltDelete", State::NotChecked,
            [](const Facts& f) { return !f.ignoresCtrlAltDelete; },
            "Ctrl+Alt+Del on a text terminal was not checked",
            "systemd does not run this machine; another init may restart it on these keys.",
            "For an init with an inittab:", "sed -i '/:ctrlaltdel:/d' /etc/inittab && telinit q" },
        { "ctrlAltDelete", State::Closed, [](const Facts& f) { return *f.ignoresCtrlAltDelete; },
            "Ctrl+Alt+Del does nothing",
            "The unit is masked, and pressing it many times does nothing either." },
        { "ctrlAltDelete", State::Gap, always,
            "Ctrl+Alt+Del restarts the machine from a text terminal",
            "While a display is up the lock has these keys; after a switch to a text terminal the "
            "kernel gives them to systemd.",
            "Switch off both the single and the repeated press:",
            "systemctl mask ctrl-alt-del.target\nmkdir -p /etc/systemd/system.conf.d\n"
            "printf '[Manager]\\nCtrlAltDelBurstAction=none\\n' > "
            "/etc/systemd/system.conf.d/90-quillox.conf\nsystemctl daemon-reexec" },

        { "user", State::Gap, [](const Facts& f) { return f.isRoot; },
            "This session belongs to root",
            "Whatever gets out of the web page or of the lock may do anything to the machine.",
            "Make an account for the kiosk, and start the session as that user:",
            "adduser --disabled-password --gecos Kiosk kiosk" },
        { "user", State::Closed, always, "This session belongs to an ordinary user",
            "What gets out of the lock may do what this user may do." },
        { "sandbox", State::Gap, [](const Facts& f) { return !f.hasSandbox; },
            "The web engine's sandbox is missing",
            "Web pages run in a sandbox made by bubblewrap and xdg-dbus-proxy.",
            "Install both:", "apt install bubblewrap xdg-dbus-proxy" },
        { "sandbox", State::Blocking, [](const Facts& f) { return !f.sandboxFailure.empty(); },
            "No page can be shown",
            "The web engine shows none without its sandbox, and that does not start: {}",
            "Where the kernel keeps user namespaces from ordinary users, allow them:",
            "echo 'kernel.unprivileged_userns_clone = 1' > /etc/sysctl.d/90-quillox-pages.conf\n"
            "sysctl --system",
            sandboxFailure },
        { "sandbox", State::Closed, always, "The web engine's sandbox works",
            "bubblewrap made one for a trial." },
    };

} // namespace

std::span<const LockRule> systemLockRules()
{
    return rules;
}

} // namespace quillox
