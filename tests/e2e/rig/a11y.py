"""The program as a screen reader sees it, over a bus of its own; and its controls, worked by keys or the pointer."""

from dataclasses import dataclass
from pathlib import Path

import pytest

from .waiting import wait_for

try:
    from gi.repository import Gio, GLib
except ImportError:
    Gio = None

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
ROOT = "/org/a11y/atspi/accessible/root"
ROLES = {7: "check box", 11: "combo box", 16: "dialog", 23: "window", 27: "image", 29: "label", 32: "option", 35: "menu item",
         39: "group", 43: "button", 42: "progress bar", 44: "radio", 49: "scroller", 61: "text box", 62: "switch", 88: "link"}
STATES = {4: "checked", 11: "focusable", 12: "focused", 20: "pressed", 23: "selected", 24: "sensitive"}
MOST_STEPS = 150


@dataclass(frozen=True)
class Widget:
    path: str
    parent: str
    name: str
    role: str
    states: frozenset

    def __str__(self):
        return f"{self.role} “{self.name}” " + " ".join(sorted(self.states))


class Screen:
    """Made before the program is started."""

    def __init__(self, bed):
        if not Gio or not Path(LAUNCHER).exists():
            pytest.skip("needs at-spi2-core and python3-gi: see packaging/packages/test.txt")
        self._bed = bed
        bus = bed.home.session_bus()
        bed.home.environment["DBUS_SESSION_BUS_ADDRESS"] = bus
        del bed.home.environment["NO_AT_BRIDGE"]
        bed.home.start(LAUNCHER, "--launch-immediately")
        session = connect(bus)
        address = wait_for("bus of screen readers", lambda: call(
            session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus.GetAddress"))
        self._bus = connect(address)

    def widgets(self):
        """Everything in the program's windows, as it is read."""
        program = self._program()
        below, level = {}, [ROOT]
        while level:
            children = calls(self._bus, program, level, "org.a11y.atspi.Accessible.GetChildren")
            below |= {path: [child for _, child in found or ()] for path, found in zip(level, children)}
            level = [child for path in level for child in below[path]]
        return list(self._walk(ROOT, below, {widget.path: widget for widget in self._known()}))

    def _walk(self, parent, below, known):
        for path in below.get(parent, ()):
            if path in known:
                yield known[path]
                yield from self._walk(path, below, known)

    def _known(self):
        """Those that were asked for at some time, or had the focus; some may be hidden by now."""
        for (_, path), _, (_, parent), *_, name, role, _, (low, _) in call(
                self._bus, self._program(), "/org/a11y/atspi/cache", "org.a11y.atspi.Cache.GetItems") or ():
            states = frozenset(state for bit, state in STATES.items() if low >> bit & 1)
            yield Widget(path, parent, name, ROLES.get(role, f"role {role}"), states)

    def _program(self):
        """The name of the program that was started last."""
        def names():
            children = call(self._bus, "org.a11y.atspi.Registry", ROOT, "org.a11y.atspi.Accessible.GetChildren")
            return [name for name, _ in children or () if self._process(name) == self._bed.process.pid]
        return wait_for("program on the bus of screen readers", names)[-1]

    def _process(self, name):
        return call(self._bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus.GetConnectionUnixProcessID", "(s)", name)

    def names(self):
        return {widget.name for widget in self.widgets()}

    def wait(self, *names):
        """Until there are texts or controls of all these names."""
        wait_for(" and ".join(names), lambda: set(names) <= self.names())

    def control(self, name):
        """The one control of this name."""
        def found():
            return [widget for widget in self.widgets() if widget.name == name and widget.role != "label"]
        widgets = wait_for(f"control {name}", found)
        assert len(widgets) == 1, [str(widget) for widget in widgets]
        return widgets[0]

    def focused(self):
        return next((widget for widget in self._known() if "focused" in widget.states), None)

    def tab(self, key="Tab"):
        """Presses the key until the focus is elsewhere; gives what has it then."""
        before = self.focused()
        self._bed.display.press(key)
        return wait_for("another focus", lambda: (now := self.focused()) and (
            not before or now.path != before.path) and now)

    def go(self, what, is_there, key="Tab"):
        """Moves the focus by a key until it is on what was asked for."""
        for _ in range(MOST_STEPS):
            if (now := self.focused()) and is_there(now):
                return
            self.tab(key)
        raise AssertionError(f"no way to {what} by {key}")

    def focus(self, name, key="Tab"):
        self.go(name, lambda widget: widget.name == name, key)

    def press(self, *names, key="space"):
        """Goes to controls by Tab, one after the other, and presses a key on each."""
        for name in names:
            self.focus(name)
            self._bed.display.press(key)

    def enter(self, name, text):
        """Replaces what is in a field."""
        self.focus(name)
        self._bed.display.press("ctrl+a")
        self._bed.display.enter(text)

    def choose(self, name, *arrows):
        """One of some radio buttons, to one of which Tab leads; `arrows` lead on."""
        group = self.control(name).parent
        self.go(name, lambda widget: widget.parent == group)
        for arrow in arrows:
            self.tab(arrow)
        self.focus(name)
        self._bed.display.press("space")

    def choose_item(self, menu, name):
        """Opens a menu and chooses an item of it."""
        self.press(menu)
        self.focus(name, "Down")
        self._bed.display.press("Return")


def connect(address):
    kinds = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, kinds.AUTHENTICATION_CLIENT | kinds.MESSAGE_BUS_CONNECTION, None, None)


def call(bus, name, path, method, signature="()", *arguments):
    """The answer's one value, None where the one that was asked has gone or is not there yet."""
    return calls(bus, name, [path], method, signature, *arguments)[0]


def calls(bus, name, paths, method, signature="()", *arguments):
    """The same of many at once."""
    answers = {}

    def keep(_, result, path):
        try:
            answers[path] = bus.call_finish(result).unpack()[0]
        except GLib.Error:
            answers[path] = None
    for path in paths:
        bus.call(name, path, *method.rsplit(".", 1), GLib.Variant(signature, arguments), None, 0, 5000, None, keep, path)
    while len(answers) < len(paths):
        GLib.MainContext.default().iteration(True)
    return [answers[path] for path in paths]
