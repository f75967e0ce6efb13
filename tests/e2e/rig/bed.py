"""A display, a home, a page and the program together: what one test works with."""

import contextlib
import json
import os
import re
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

import pytest

from . import canaries, touch, wayland, x11
from .home import Home
from .site import Site, page_picture
from .waiting import wait_for

X11_DISPLAYS = {
    "no window manager": x11.X11,
    "openbox": lambda home: x11.X11(home, manager=("openbox",)),
    "xfwm4": x11.xfwm4,
    "three outputs": x11.three_outputs,
    "touch screen": touch.touch_screen,
    "openbox with bindings": canaries.openbox,
    "xfwm4 with bindings": canaries.xfwm4,
    "bindings, no window manager": canaries.no_manager,
}
WAYLAND_DISPLAYS = {
    "sway": wayland.Sway,
    "sway, two outputs": lambda home: wayland.Sway(home, outputs=2),
    "cage": wayland.Cage,
    "sway with bindings": canaries.sway,
}
SUPPRESSIONS = Path(__file__).parent.parent / "lsan.supp"
ENGINE = "libquillox-engine.so"
GESTURE = "super+shift+s"
RESTS = 50  # looks in a row


class Bed:
    def __init__(self, kind):
        self.binary = os.environ.get("QUILLOX_BINARY") or pytest.skip("QUILLOX_BINARY is not set")
        self.site = Site()
        self.home = Home()
        self.home.environment.update(
            QUILLOX_GL="off",
            ASAN_OPTIONS="detect_leaks=1:fast_unwind_on_malloc=0:intercept_tls_get_addr=0", UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1",
            LSAN_OPTIONS=f"suppressions={SUPPRESSIONS}:print_suppressions=0")
        self.defaults = self.home.subfolder("config_home/Quillox") / "defaults.json"
        self.settings(url=self.site.url, autoStartKiosk=True, displayID=0)
        self.process = None
        self.display = None
        try:
            self.display = {**X11_DISPLAYS, **WAYLAND_DISPLAYS}[kind](self.home)
        except BaseException:
            self.end()
            raise

    def settings(self, **settings):
        self.defaults.write_text(json.dumps({"hasOnboarded": True, "kioskSettings": settings}))

    def start(self, **options):
        """Starts one more copy of the program; the first is `process`."""
        command = (*self.display.launcher, self._reachable() if self.display.launcher else self.binary)
        process = self.home.start(*command, log="quillox", **{
            **options, "environment": {**self.display.environment, **options.get("environment", {})}})
        self.process = self.process or process
        self.display.started()
        return process

    def _reachable(self):
        """A copy of the program for the ordinary user, who may not enter the folder that it was built in."""
        copy = self.home.folder / "quillox"
        return str(copy if copy.exists() else self.copy_program(self.home.folder))

    def copy_program(self, folder):
        """Copies the program and its half for the web engine; returns the program's new path."""
        shutil.copy2(Path(self.binary).with_name(ENGINE), folder)
        return shutil.copy2(self.binary, folder)

    def run(self, *arguments):
        """What the program prints for a command."""
        return self.home.run(self.binary, *arguments, environment=self.display.environment).decode()

    def choose(self, output):
        """Chooses the kiosk's display as an operator does on the command line."""
        listing = self.run("displays")
        number = re.search(rf"^(\d+)\t.*\b{output}\b", listing, re.M)
        assert number, f"no {output} in: {listing}"
        self.run("config", "set", "displayID", number[1])

    @property
    def log(self):
        return (self.home.logs / "quillox").read_text(errors="replace")

    def picture(self):
        return self.display.picture(next(iter(self.display.outputs())))

    def shows_page(self, output):
        picture = self.display.picture(output)
        return picture == page_picture(picture.size)

    def is_sealed(self, output=None):
        outputs = self.display.outputs()
        kiosk = output or next(iter(outputs))
        if kiosk not in outputs:
            return False
        left, top, *size = outputs[kiosk]
        page = page_picture(size)
        return all(self.display.picture(name) == page.crop((x - left, y - top, x - left + width, y - top + height))
                   for name, (x, y, width, height) in outputs.items())

    def wait_sealed(self, output=None):
        """Until `output` shows the page edge to edge; others show of it what they mirror, and are black beside it."""
        wait_for(f"page on {output or 'the screen'}, black elsewhere", lambda: self.is_sealed(output))
        assert self.process.poll() is None

    def hold_to_seal(self):
        """Holds the keys in the setup window until its middle tells to release them; the page may not come yet."""
        self.display.focus_setup()
        x, y, width, height = self.display.setup_box()
        middle = x + width // 2 - 60, y + height // 2 - 15, x + width // 2 + 60, y + height // 2 + 15

        def is_covered():
            levels = self.display.look(middle).convert("L").histogram()
            return sum(levels[:100]) > sum(levels) / 2
        wait_for("setup screen", lambda: not is_covered())
        # A key that is down again before the program has read that it was let go does not count as let go.
        self.wait_at_rest()
        with self.display.hold(GESTURE):
            wait_for("completed hold", is_covered)

    def wait_at_rest(self):
        """Until the program's main thread waits for events, so that it has dealt with those so far."""
        stat = Path(f"/proc/{self.process.pid}/stat")
        wait_for("rest", lambda: all(stat.read_text().rpartition(") ")[2][0] == "S" for _ in range(RESTS)))

    def seal(self):
        self.hold_to_seal()
        self.wait_sealed()

    def start_sealed(self, **settings):
        # The setup asks for a password too, and some desktops have the gesture for themselves.
        is_automatic = settings.get("requireExitPassword") or hasattr(self.display, "fired")
        self.settings(**settings, autoStartKiosk=bool(is_automatic))
        self.start()
        self.wait_sealed() if is_automatic else self.seal()

    def seal_page(self, page, password=""):
        """Starts the program and seals a page that tells the keys that it sees."""
        self.start_sealed(url=self.site.url + page, requireExitPassword=bool(password), exitPassword=password)
        wait_for("field with the keyboard", lambda: "/focused" in self.site.paths)

    def seen_keys(self):
        """What the page saw of keys since the last call, and the text that its field holds.

        All that was pressed before has been dealt with then. Modifiers are left out.
        """
        count = len(self.site.told)
        self.display.press("x")
        keys, text = wait_for("letter in the page", lambda: self.site.told[count:])[-1]
        keys = [key for key in keys if not re.search(r" (Shift|Control|Alt|Meta|OS|Unidentified)", key)]
        assert keys[-2:] == ["keydown KeyX", "keyup KeyX"], keys
        return keys[:-2], text

    def open_list(self):
        """Opens the list of the page of keys, which is a popup window."""
        width, height = self.picture().size
        self.display.click(width // 7, height // 7)
        wait_for("open list", self.is_list_open)

    def close_list(self):
        assert self.is_list_open()
        self.display.press("Escape")
        self.wait_sealed()

    def is_list_open(self):
        """Whether something covers the page's left; what belongs to the gesture is in its middle."""
        picture = self.picture()
        left = (0, 0, picture.width // 3, picture.height)
        return picture.crop(left) != page_picture(picture.size).crop(left)

    def is_prompt_open(self):
        """Whether the exit prompt darkens the page, up to its edges."""
        picture = self.picture()
        return picture.getpixel((1, 1)) != page_picture(picture.size).getpixel((1, 1))

    def hold(self, seconds, meanwhile=lambda: None):
        """Holds the keys that unseal for some time."""
        end = time.monotonic() + seconds
        with self.display.hold(GESTURE):
            meanwhile()
            wait_for("end of the hold", lambda: time.monotonic() >= end)

    def open_prompt(self):
        with self.display.hold(GESTURE):
            wait_for("exit prompt", self.is_prompt_open)

    def unseal(self):
        """Holds the keys until it shows; that takes a second."""
        with self.display.hold(GESTURE):
            self.wait_unsealed()

    def is_unsealed(self):
        """Whether the setup window is all that the program shows; it also stays where it is during a run."""
        return (not self.display.sealed_windows(self.process.pid) and self.display.setup_window()
                and not any(self.shows_page(output) for output in self.display.outputs()))

    def wait_unsealed(self):
        wait_for("setup window and no page", self.is_unsealed)

    def close(self):
        """Closes the setup window; the program ends by itself, without complaints of a sanitizer."""
        self.display.close_setup()
        assert self.process.wait(timeout=30) == 0, self.log
        assert "Sanitizer" not in self.log and "runtime error" not in self.log, self.log

    def save_evidence(self):
        """Copies pictures and logs to where they outlive the test."""
        root = os.environ.get("QUILLOX_E2E_ARTIFACTS") or tempfile.gettempdir()
        os.makedirs(root, exist_ok=True)
        folder = Path(tempfile.mkdtemp(prefix="quillox-e2e-evidence-", dir=root))
        for log in self.home.logs.iterdir():
            (folder / log.name).write_bytes(log.read_bytes())
        for output in self.display.outputs():
            with contextlib.suppress(OSError, subprocess.SubprocessError):
                self.display.picture(output).save(folder / f"{output}.png")
        return folder

    def end(self):
        if self.display:
            self.display.end()
        self.home.end()
        self.site.end()
