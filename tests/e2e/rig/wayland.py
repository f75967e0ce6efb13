"""Wayland compositors, nested in an X server: it gives them keys and several outputs."""

import io
import json
import os

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


def nested(outer, outputs):
    """The environment of a compositor whose outputs are windows of the outer X server."""
    return {**outer.environment, "WLR_BACKENDS": "x11", "WLR_X11_OUTPUTS": str(outputs),
            "WLR_RENDERER": "pixman", "WLR_LIBINPUT_NO_DEVICES": "1"}


class Sway:
    """sway with any number of outputs, each a window of an outer X server, which sends the keys."""

    launcher = ()

    def __init__(self, home, outputs=1):
        needs("sway", "swaybg", "grim")
        self._home = home
        self._outer = X11(home)
        folder = home.subfolder("compositor")
        (folder / "config").write_text(SWAY_CONFIGURATION)
        self._tools = {"SWAYSOCK": str(folder / "sway.sock"), "WAYLAND_DISPLAY": "wayland-1"}
        self.environment = {**self._tools, "GDK_BACKEND": "wayland"}
        home.start(*as_ordinary_user(folder), "sway", "--config", folder / "config", log="sway", environment={
            **nested(self._outer, outputs), "HOME": str(folder),
            "XDG_RUNTIME_DIR": str(folder), "SWAYSOCK": self._tools["SWAYSOCK"]})
        wait_for("sway", lambda: os.path.exists(self._tools["SWAYSOCK"])
                 and (folder / "wayland-1").exists())
        # The engine's sandbox finds the socket in the program's own runtime folder only.
        os.link(folder / "wayland-1", f"{home.environment['XDG_RUNTIME_DIR']}/wayland-1")
        wait_for("sway's outputs", lambda: len(self.outputs()) == outputs)
        wait_for("sway's background", lambda: all(
            self._shows_background(output) for output in self.outputs()))

    def run(self, *command):
        return self._home.run(*command, environment=self._tools)

    def outputs(self):
        """The active outputs as name and rectangle (x, y, width, height)."""
        return {output["name"]: tuple(output["rect"][key] for key in ("x", "y", "width", "height"))
                for output in json.loads(self.run("swaymsg", "-t", "get_outputs")) if output["active"]}

    def picture(self, output):
        return Image.open(io.BytesIO(self.run("grim", "-o", output, "-t", "ppm", "-"))).convert("RGB")

    def look(self, box):
        return self.picture(next(iter(self.outputs()))).crop(box)

    def windows(self):
        """The identities of the windows that the compositor shows."""
        return {node["id"] for node in self._nodes() if node.get("pid") and node["visible"]}

    def plug(self):
        """A new output; returns its name."""
        before = self.outputs()
        self.run("swaymsg", "create_output")
        return wait_for("new output", lambda: set(self.outputs()) - set(before)).pop()

    def unplug(self, output):
        """The output vanishes, as its window in the outer server is closed."""
        window, = self._outer.named(f"wlroots - {output}")
        self._outer.close(window)
        wait_for("output's end", lambda: output not in self.outputs())

    def focus_setup(self):
        wait_for("focused setup window", lambda: [
            node for node in self._nodes() if self._is_setup(node) and node["focused"]])

    def sealed_windows(self, pid):
        return [node for node in self._nodes() if node.get("pid") == pid and node["fullscreen_mode"]]

    def setup_window(self):
        return next((node for node in self._nodes() if self._is_setup(node)), None)

    def setup_box(self):
        rectangle = wait_for("setup window", self.setup_window)["rect"]
        return tuple(rectangle[key] for key in ("x", "y", "width", "height"))

    def close_setup(self):
        self.run("swaymsg", f"[con_id={self.setup_window()['id']}]", "kill")

    def press(self, keys):
        self._outer.press(keys)

    def hold(self, keys):
        return self._outer.hold(keys)

    def click(self, x, y):
        self._outer.click(x, y)

    def enter(self, text):
        self._outer.enter(text)

    def use_layout(self, layout):
        self._outer.use_layout(layout)
        self.run("swaymsg", "input", "type:keyboard", "xkb_layout", layout)

    def open_bystander(self):
        """Another program's window, which the kiosk must leave as it was."""
        before = {output: self.picture(output) for output in self.outputs()}
        self._home.start("swaynag", "--message", "bystander", environment=self._tools)
        wait_for("bystander", lambda: any(self.picture(name) != old for name, old in before.items()))

    def started(self):
        """Nothing is left to do once the program runs."""

    def end(self):
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
        self.environment = {**nested(self._outer, 2), "GDK_BACKEND": "wayland"}

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
