"""Wayland compositors, nested in an X server (for keys and several outputs) or headless."""

import io
import json
import os
import subprocess

from PIL import Image, ImageGrab

from .home import as_ordinary_user, needs
from .waiting import wait_for
from .x11 import BACKGROUND, X11

SWAY_CONFIGURATION = f"""
xwayland disable
focus_follows_mouse no
default_border none
output * bg #{BACKGROUND:06x} solid_color
"""


class Sway:
    """sway with `outputs` outputs; without `nested` it is headless and keys come from wtype."""

    launcher = ()

    def __init__(self, home, outputs=1, nested=True):
        needs("sway", "swaymsg", "swaybg", "grim", *([] if nested else ["wtype"]))
        self._home = home
        self._outer = X11(home) if nested else None
        folder = home.subfolder("compositor")
        (folder / "config").write_text(SWAY_CONFIGURATION)
        self._tools = {"SWAYSOCK": str(folder / "sway.sock"), "WAYLAND_DISPLAY": "wayland-1"}
        self.environment = {**self._tools, "GDK_BACKEND": "wayland"}
        backend = ({"WLR_BACKENDS": "x11", "WLR_X11_OUTPUTS": str(outputs), **self._outer.environment}
                   if nested else {"WLR_BACKENDS": "headless", "WLR_HEADLESS_OUTPUTS": str(outputs)})
        home.start(*as_ordinary_user(folder), "sway", "--config", folder / "config", log="sway", environment={
            **backend, "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1", "HOME": str(folder),
            "XDG_RUNTIME_DIR": str(folder), "SWAYSOCK": self._tools["SWAYSOCK"]})
        wait_for("sway", lambda: os.path.exists(self._tools["SWAYSOCK"])
                 and (folder / "wayland-1").exists())
        # The engine's sandbox finds the socket in the program's own runtime folder only.
        os.link(folder / "wayland-1", f"{home.environment['XDG_RUNTIME_DIR']}/wayland-1")
        wait_for("sway's outputs", lambda: len(self.outputs()) == outputs)
        wait_for("sway's background", lambda: all(
            self._shows_background(output) for output in self.outputs()))

    def run(self, *command):
        return subprocess.run(command, env={**self._home.environment, **self._tools}, check=True,
                              capture_output=True, timeout=30).stdout

    def message(self, *words):
        return self.run("swaymsg", *words)

    def outputs(self):
        """The active outputs as name and rectangle (x, y, width, height)."""
        return {output["name"]: tuple(output["rect"][key] for key in ("x", "y", "width", "height"))
                for output in json.loads(self.run("swaymsg", "-t", "get_outputs")) if output["active"]}

    def picture(self, output):
        return Image.open(io.BytesIO(self.run("grim", "-o", output, "-t", "ppm", "-"))).convert("RGB")

    def windows(self):
        """The identities of the windows that the compositor shows."""
        return {node["id"] for node in self._nodes() if node.get("pid") and node["visible"]}

    def plug(self):
        """A new output; returns its name."""
        before = self.outputs()
        self.message("create_output")
        return wait_for("new output", lambda: set(self.outputs()) - set(before)).pop()

    def unplug(self, output):
        """The output vanishes, as its window in the outer server is closed."""
        window, = self._outer.named(f"wlroots - {output}")
        self._outer.close(window)
        wait_for("output's end", lambda: output not in self.outputs())

    def focus_setup(self):
        wait_for("focused setup window", lambda: [
            node for node in self._nodes() if self._is_setup(node) and node["focused"]])

    def setup_window(self):
        return next((node for node in self._nodes() if self._is_setup(node)), None)

    def close_setup(self):
        self.message(f"[con_id={self.setup_window()['id']}]", "kill")

    def press(self, keys):
        if self._outer:
            return self._outer.press(keys)
        *modifiers, key = keys.split("+")
        self.run("wtype", *(word for name in modifiers for word in ("-M", name)), "-k", key)

    def open_bystander(self):
        """Another program's window, which the kiosk must leave as it was."""
        before = {output: self.picture(output) for output in self.outputs()}
        self._home.start("swaynag", "--message", "bystander", environment=self._tools)
        wait_for("bystander", lambda: any(self.picture(name) != old for name, old in before.items()))

    def started(self):
        """Nothing is left to do once the program runs."""

    def end(self):
        if self._outer:
            self._outer.end()

    def _nodes(self):
        pending = [json.loads(self.run("swaymsg", "-t", "get_tree"))]
        while pending:
            node = pending.pop()
            yield node
            pending += node["nodes"] + node["floating_nodes"]

    @staticmethod
    def _is_setup(node):
        return node.get("pid") and node["name"] == "Quillox" and node["fullscreen_mode"] == 0 and node["visible"]

    def _shows_background(self, output):
        return self.picture(output).getpixel((0, 0)) == tuple(BACKGROUND.to_bytes(3, "big"))


class Cage:
    """cage with two outputs; it starts the program itself and spreads every window over both."""

    SIZE = (2048, 768)

    def __init__(self, home):
        needs("cage", "Xwayland")  # This cage does not start without the latter.
        self._outer = X11(home, ("Xvfb", "-screen", "0", "{}x{}x24".format(*self.SIZE)))
        self.launcher = (*as_ordinary_user(home.folder), "cage", "--")
        self.environment = {**self._outer.environment, "GDK_BACKEND": "wayland", "WLR_BACKENDS": "x11",
                            "WLR_X11_OUTPUTS": "2", "WLR_RENDERER": "pixman",
                            "WLR_LIBINPUT_NO_DEVICES": "1"}

    def started(self):
        """Puts the second output beside the first; they come up on the same spot."""
        second, = wait_for("second output", lambda: self._outer.named("wlroots - X11-2"))
        second.configure(x=self.SIZE[0] // 2)
        second.display.flush()

    def outputs(self):
        return {"all": (0, 0, *self.SIZE)}

    def picture(self, _):
        return ImageGrab.grab(xdisplay=self._outer.environment["DISPLAY"])

    def end(self):
        self._outer.end()
