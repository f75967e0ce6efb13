"""Desktops whose key bindings leave a trace: what a sealed run must keep from firing."""

import contextlib
from xml.sax.saxutils import quoteattr

from Xlib import X
from Xlib.display import Display

from .waiting import wait_for
from .wayland import Sway
from .x11 import X11
from .x11 import xfwm4 as desktop

BINDINGS = ("alt+Tab", "alt+F4", "alt+F2", "super+e", "ctrl+alt+t", "ctrl+alt+Right", "Print", "XF86AudioMute",
            "XF86AudioPlay", "super+shift+s")
MASKS = {"alt": X.Mod1Mask, "ctrl": X.ControlMask, "shift": X.ShiftMask, "super": X.Mod4Mask}


def spelled(keys, alt, ctrl, shift, super_):
    """A binding as a desktop writes it, which gives its names of the modifiers."""
    *held, key = keys.split("+")
    names = {"alt": alt, "ctrl": ctrl, "shift": shift, "super": super_}
    return "".join(names[name] for name in held) + key


def press_each(display):
    """Presses every binding until it fired; a desktop misses some while it is busy with another one."""
    for keys in BINDINGS:
        count = display.fired().count(keys)

        def fires():
            display.press(keys)
            with contextlib.suppress(AssertionError):
                return wait_for(keys, lambda: display.fired().count(keys) > count, deadline=2)
        wait_for(keys, fires)


class Trace:
    """A file to which the commands of bindings add their names."""

    def __init__(self, home):
        self._file = home.folder / "fired"
        self._file.touch()
        self._file.chmod(0o666)  # The desktop may run as another user.

    def command(self, keys):
        return f"echo {keys} >> {self._file}"

    def fired(self):
        return self._file.read_text().split()


class Events:
    """The events of an X server that show a binding."""

    def __init__(self, server):
        self.display = Display(server.environment["DISPLAY"])
        self.root = self.display.screen().root
        self._fired = []

    def collect(self, binding):
        """All bindings so far; `binding` is the one that an event stands for, if any."""
        while self.display.pending_events():
            name = binding(self.display.next_event())
            self._fired += [name] if name else []
        return list(self._fired)


def openbox(home):
    trace = Trace(home)
    rows = [f"<keybind key='{spelled(keys, 'A-', 'C-', 'S-', 'W-')}'><action name='Execute'><command>"
            f"sh -c {quoteattr(trace.command(keys))}</command></action></keybind>" for keys in BINDINGS]
    configuration = home.folder / "openbox.xml"
    configuration.write_text(
        f"<openbox_config xmlns='http://openbox.org/3.4/rc'><keyboard>{''.join(rows)}</keyboard></openbox_config>")
    server = X11(home, manager=("openbox", "--config-file", configuration))
    server.fired = trace.fired
    return server


def sway(home):
    trace = Trace(home)
    compositor = Sway(home)
    for keys in BINDINGS:
        compositor.run("swaymsg", "bindsym", spelled(keys, "Mod1+", "Ctrl+", "Shift+", "Mod4+"), "exec", trace.command(keys))
    compositor.fired = trace.fired
    return compositor


def xfwm4(home):
    """Without the rest of its desktop this window manager runs no commands: bindings lead to a workspace each."""
    def channel(name, *path, properties):
        opened = "".join(f"<property name='{part}' type='empty'>" for part in path)
        (folder / f"{name}.xml").write_text(f"<channel name='{name}' version='1.0'>{opened}{properties}"
                                            f"{'</property>' * len(path)}</channel>")
    folder = home.folder / "config_home/xfce4/xfconf/xfce-perchannel-xml"
    folder.mkdir(parents=True)
    channel("xfwm4", "general", properties=f"<property name='workspace_count' type='int' value='{len(BINDINGS) + 1}'/>")
    channel("xfce4-keyboard-shortcuts", "xfwm4", "custom", properties="<property name='override' type='bool' value='true'/>"
            + "".join(f"<property name={quoteattr(spelled(keys, '<Alt>', '<Primary>', '<Shift>', '<Super>'))} "
                      f"type='string' value='workspace_{number}_key'/>" for number, keys in enumerate(BINDINGS, start=2)))
    server = desktop(home)
    events = Events(server)
    workspace = events.display.intern_atom("_NET_CURRENT_DESKTOP")
    events.root.change_attributes(event_mask=X.PropertyChangeMask)
    events.display.sync()

    def binding(event):
        if event.type != X.PropertyNotify or event.atom != workspace:
            return None
        number = events.root.get_full_property(workspace, X.AnyPropertyType).value[0]
        return number and BINDINGS[number - 1]
    server.fired = lambda: events.collect(binding)
    return server


def no_manager(home):
    """A client that grabs the bindings, as a window manager does."""
    server = X11(home)
    events = Events(server)
    bindings = {}
    for keys in BINDINGS:
        *held, key = keys.split("+")
        code, mask = server.keycode(key), sum(MASKS[name] for name in held)
        bindings[code, mask] = keys
        events.root.grab_key(code, mask, False, X.GrabModeAsync, X.GrabModeAsync)
    events.display.sync()
    server.fired = lambda: events.collect(lambda event: event.type == X.KeyPress and bindings[
        event.detail, event.state & sum(MASKS.values())])
    return server
