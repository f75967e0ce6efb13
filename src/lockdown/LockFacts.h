#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillox {

/// What an X server says.
struct X11Facts {
    enum class KeyboardGrab {
        NotTried,
        Free, ///< It was given to us for a moment.
        Held, ///< Another client has it.
        Refused, ///< For another reason, such as a server without the input extension.
    };

    /// The server is itself a client of a Wayland compositor, which sees every key first.
    bool isXwayland = false;
    KeyboardGrab keyboardGrab = KeyboardGrab::NotTried;
    bool hasWindowManager = false;
    /// Empty when it does not tell.
    std::string windowManager;
    /// How many actions of its key maps switch the terminal, end the server or break grabs.
    std::optional<int> serverKeys;
    /// Whether the server lets us change what such keys do.
    std::optional<bool> canChangeServerKeys;
    /// Connected programs other than a running kiosk and this process, such as "xterm (process
    /// 12)".
    std::optional<std::vector<std::string>> otherClients;
    /// Whether the server asks who connects.
    std::optional<bool> hasAccessControl;
    bool canSuspendScreenSaver = false;
    /// Whether it can switch screens off to save power; Quillox can always keep it from that.
    bool hasPowerSaving = false;

    bool operator==(const X11Facts&) const = default;
};

/// What a Wayland compositor offers, and how it was set up.
struct WaylandFacts {
    /// It shows one window over everything and acts on no keys.
    bool isSingleWindow = false;
    bool offersShortcutsInhibitor = false;
    bool offersIdleInhibitor = false;
    /// Whether the compositor would switch the virtual terminal at Ctrl+Alt+F1 and the like.
    std::optional<bool> switchesTerminals;
    /// Bindings that it acts on although shortcuts are inhibited, as they are written there.
    std::optional<std::vector<std::string>> uninhibitableBindings;

    bool operator==(const WaylandFacts&) const = default;
};

/// What the login service says.
struct LoginFacts {
    /// Settings by which it acts on power keys or the lid, such as "HandlePowerKey=poweroff".
    std::vector<std::string> keyActions;
    /// Empty when it did not tell.
    std::string idleAction;
    /// The kinds of inhibitor that it refused to give us, such as "handle-power-key".
    std::vector<std::string> refusedInhibitors;

    bool operator==(const LoginFacts&) const = default;
};

/// What was found out about one session. An empty optional was not found out.
struct LockFacts {
    enum class Display { Absent, NotAnswering, X11, Wayland };

    Display display = Display::Absent;
    /// As in DISPLAY or WAYLAND_DISPLAY.
    std::string displayName;
    /// The name of the process that is the X server or the compositor; empty when unknown.
    std::string displayServer;
    /// Whether it reads input devices of the kernel itself.
    std::optional<bool> serverReadsInput;
    X11Facts x11;
    WaylandFacts wayland;

    /// XDG_SESSION_TYPE, XDG_SESSION_DESKTOP and XDG_SESSION_CLASS.
    std::string sessionType;
    std::string sessionDesktop;
    std::string sessionClass;
    /// The running kiosk of this user; 0 when none runs.
    int kioskProcess = 0;
    std::optional<bool> isKioskSealed;

    /// kernel.sysrq; 0 where the kernel has no such keys.
    std::optional<int> sysrq;
    /// Neither one Ctrl+Alt+Del nor many of them restart the machine.
    std::optional<bool> ignoresCtrlAltDelete;
    std::optional<LoginFacts> login;
    bool isRoot = false;
    bool hasSandbox = false;
    /// Why what is installed makes no sandbox; empty when it does, or nothing is installed.
    std::string sandboxFailure;

    bool operator==(const LockFacts&) const = default;
};

} // namespace quillox
