"""X servers with and without a window manager: windows, pictures, keys, outputs."""

import contextlib
import os
import re
import subprocess
from pathlib import Path

import pytest
from PIL import ImageGrab
from Xlib import XK, X, error
from Xlib.display import Display
from Xlib.ext import xtest
from Xlib.protocol.event import ClientMessage, MappingNotify

from .home import needs
from .waiting import wait_for

BACKGROUND = 0x305070  # Neither black nor a colour of the page: what no window covers shows.
FIRST_DISPLAY = int(os.environ.get("QUILLOX_E2E_FIRST_DISPLAY", "70"))
MODIFIERS = {"alt": "Alt_L", "altgr": "ISO_Level3_Shift", "ctrl": "Control_L", "shift": "Shift_L", "super": "Super_L"}
XK.load_keysym_group("xf86")
XK.load_keysym_group("xkb")
DUMMY_DRIVER = Path("/usr/lib/xorg/modules/drivers/dummy_drv.so")
DUMMY_CONFIGURATION = """
Section "Device"
  Identifier "card"
  Driver "dummy"
  VideoRam 65536
EndSection
Section "Monitor"
  Identifier "monitor"
  HorizSync 5-1000
  VertRefresh 5-200
EndSection
Section "Screen"
  Identifier "screen"
  Device "card"
  Monitor "monitor"
  DefaultDepth 24
  SubSection "Display"
    Depth 24
    Modes "1024x768"
    Virtual 4096 2048
  EndSubSection
EndSection
Section "ServerFlags"
  Option "AutoAddDevices" "false"
  Option "AutoAddGPU" "false"
EndSection
"""


class X11:
    """One X server; `manager` is the command line of its window manager, if it has one."""

    launcher = ()

    def __init__(self, home, server=("Xvfb", "-screen", "0", "1024x768x24"), manager=()):
        needs(server[0], "xdotool", "xrandr", *manager[:1])
        self._home = home
        self.environment = {"DISPLAY": self._start_server(server), "GDK_BACKEND": "x11"}
        self._display = Display(self.environment["DISPLAY"])
        self._root = self._display.screen().root
        self._root.change_attributes(background_pixel=BACKGROUND)
        self._root.clear_area()
        for name in ("WM_PROTOCOLS", "WM_DELETE_WINDOW", "_NET_WM_NAME", "UTF8_STRING"):
            self._display.intern_atom(name)  # A nested compositor names its windows only if these exist.
        self._display.sync()
        if manager:
            home.start(*manager, environment=self.environment)
            self._wait_for_manager()
        self._managed = bool(manager)

    def _start_server(self, command):
        for number in range(FIRST_DISPLAY, FIRST_DISPLAY + 20):
            reading, writing = os.pipe()
            self._home.start(command[0], f":{number}", *command[1:], "-noreset", "-ac", "-nolisten", "tcp",
                             "-displayfd", writing, pass_fds=[writing])
            os.close(writing)
            with os.fdopen(reading) as announcement:
                if announcement.read().strip():  # Empty when the number was taken.
                    return f":{number}"
        raise AssertionError(f"no X server started, see {self._home.logs}")

    def _wait_for_manager(self):
        """Until it frames a window; one that is mapped while it starts may stay without for ever."""
        probe = self._root.create_window(0, 0, 9, 9, 0, X.CopyFromParent)

        def is_framed():
            if probe.query_tree().parent != self._root:
                return True
            probe.unmap()
            probe.map()
            return False
        wait_for("window manager", is_framed)
        probe.destroy()
        self._display.sync()

    def run(self, *command):
        return self._home.run(*command, environment=self.environment).decode()

    def outputs(self):
        """The active outputs as name and rectangle (x, y, width, height)."""
        rows = re.findall(r"^ *\d+: \S+ (\d+)/\d+x(\d+)/\d+\+(\d+)\+(\d+)  (\S+)$",
                          self.run("xrandr", "--listactivemonitors"), re.M)
        return {row[4]: (int(row[2]), int(row[3]), int(row[0]), int(row[1])) for row in rows}

    def picture(self, output):
        x, y, width, height = self.outputs()[output]
        return self.look((x, y, x + width, y + height))

    def look(self, box):
        return ImageGrab.grab(xdisplay=self.environment["DISPLAY"]).crop(box)

    def plug(self, output, mode, position, *options):
        """Connects an output that shows `mode`, or changes one; repeats are harmless."""
        with contextlib.suppress(subprocess.CalledProcessError):
            self.run("xrandr", "--addmode", output, mode)
        self.run("xrandr", "--output", output, "--mode", mode, "--pos", position, *options)
        self.run("xrandr", "--query")  # Has the server probe its outputs, and so find it connected.

    def unplug(self, *outputs):
        self.run("xrandr", *(word for output in outputs for word in ("--output", output, "--off")))

    def windows(self):
        """The visible top-level windows and frames, without the dots that window managers keep."""
        return {window.id for window in self._root.query_tree().children if self._is_visible(window)}

    def all_windows(self):
        return [window.id for window in self._root.query_tree().children]

    def sealed_windows(self, pid):
        """The visible windows that a process keeps from the window manager."""
        return [window for window in self._root.query_tree().children if self._is_visible(window)
                and not self._is_managed(window) and pid in (self._property(window, "_NET_WM_PID") or ())]

    def setup_window(self):
        """The program's visible setup window, None without one."""
        return self._visible(b"Quillox")

    def _visible(self, name):
        pending = list(self._root.query_tree().children)
        while pending:
            window = pending.pop()
            if self._is_visible(window) and self._is_managed(window) and self._name(window) == name:
                return window
            tree = answer(window.query_tree)
            pending += tree.children if tree else []
        return None

    def setup_box(self):
        """Where its inside lies on the screen, as (x, y, width, height)."""
        window = wait_for("setup window", self.setup_window)
        place, size = self._root.translate_coords(window, 0, 0), window.get_geometry()
        return place.x, place.y, size.width, size.height

    def focus_setup(self):
        self._focus(wait_for("setup window", self.setup_window))

    def open_panel(self):
        """The visible panel that chooses a folder or file, None without one."""
        return self._visible(b"Open")

    def focus_open_panel(self):
        self._focus(wait_for("open panel", self.open_panel))

    def _focus(self, window):
        self.run("xdotool", "windowactivate" if self._managed else "windowfocus", "--sync", str(window.id))

    def minimise_setup(self):
        self.run("xdotool", "windowminimize", "--sync", str(self.setup_window().id))
        wait_for("minimised setup window", lambda: not self.setup_window())

    def close_setup(self):
        self.close(self.setup_window())

    def close(self, window):
        """Asks the window's owner to close it, as a window manager does."""
        atom = self._display.intern_atom
        data = (32, [atom("WM_DELETE_WINDOW"), X.CurrentTime, 0, 0, 0])
        window.send_event(ClientMessage(window=window, client_type=atom("WM_PROTOCOLS"), data=data))
        self._display.flush()

    def named(self, name):
        return [w for w in self._root.query_tree().children if self._name(w) == name.encode()]

    def press(self, keys):
        with self.hold(keys):
            pass

    @contextlib.contextmanager
    def hold(self, keys):
        """Keeps keys such as "super+shift+s" down."""
        codes = [self.keycode(key) for key in keys.split("+")]
        try:
            self.fake((X.KeyPress, code) for code in codes)
            yield
        finally:
            self.fake((X.KeyRelease, code) for code in reversed(codes))

    def click(self, x, y):
        self.fake([(X.MotionNotify, 0, x, y), (X.ButtonPress, 1), (X.ButtonRelease, 1)])

    def fake(self, inputs):
        """Has the server act as if keyboard and mouse had sent these pairs of event type and detail."""
        for kind, detail, *position in inputs:
            xtest.fake_input(self._display, kind, detail, **dict(zip("xy", position)))
        self._display.sync()

    def keycode(self, key):
        name = MODIFIERS.get(key, key).replace("XF86", "XF86_")
        code = self._display.keysym_to_keycode(XK.string_to_keysym(name))
        assert code, f"no key for {key}"
        return code

    def use_layout(self, layout):
        self.run("setxkbmap", layout)
        self._display.refresh_keyboard_mapping(MappingNotify(
            request=X.MappingKeyboard, first_keycode=8, count=248, sequence_number=0))

    def enter(self, text):
        self.run("xdotool", "type", "--clearmodifiers", "--", text)

    def open_bystander(self):
        """Another program's window, which the kiosk must leave as it was."""
        needs("xmessage")
        self._home.start("xmessage", "-geometry", "300x200+600+400", "bystander", environment=self.environment)
        wait_for("bystander", lambda: self._visible(b"xmessage"))

    def started(self):
        """Nothing is left to do once the program runs."""

    def end(self):
        self._display.close()

    def _name(self, window):
        return self._property(window, "_NET_WM_NAME") or self._property(window, "WM_NAME")

    def _property(self, window, name):
        value = answer(window.get_full_property, self._display.intern_atom(name), X.AnyPropertyType)
        return value and value.value

    def _is_visible(self, window):
        attributes, geometry = answer(window.get_attributes), answer(window.get_geometry)
        return (attributes and attributes.map_state == X.IsViewable and attributes.win_class == X.InputOutput
                and geometry and geometry.width > 1)

    def _is_managed(self, window):
        attributes = answer(window.get_attributes)
        return attributes and not attributes.override_redirect


def answer(request, *arguments):
    """The server's answer about a window, None once that has gone."""
    try:
        return request(*arguments)
    except error.XError:
        return None


def xfwm4(home):
    needs("xfwm4")
    bus = f"DBUS_SESSION_BUS_ADDRESS={home.session_bus()}"
    return X11(home, manager=("env", bus, "xfwm4", "--compositor=off"))


def three_outputs(home):
    """A server whose outputs can be plugged, unplugged and resized."""
    if not DUMMY_DRIVER.exists():
        pytest.skip("needs the X server's dummy driver: see packaging/packages/test.txt")
    configuration = home.folder / "xorg.conf"
    configuration.write_text(DUMMY_CONFIGURATION)
    server = X11(home, ("Xorg", "-config", configuration, "-novtswitch", "-sharevts", "-logfile",
                        home.logs / "Xorg.log"), ("openbox",))
    server.plug("DUMMY0", "1024x768", "0x0", "--primary")
    server.plug("DUMMY2", "1280x720", "1024x0")
    server.plug("DUMMY1", "800x600", "2304x0")
    return server
