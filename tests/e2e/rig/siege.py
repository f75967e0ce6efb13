"""The program, or the bare engine for comparison, with a page of the hostile site, and what must not change meanwhile."""

import contextlib
import itertools
from pathlib import Path

import pytest
from Xlib import X

from .hostile import GOOD, HostileSite
from .processes import descendants
from .waiting import wait_for

ENGINE_FOLDERS = ("data_home", "cache_home", "runtime_dir", "logs")
ENGINE_PROCESSES = {"bwrap", "xdg-dbus-proxy", "WebKitWebProces"}  # as the system shortens them


class Siege:
    def __init__(self, bed, **settings):
        self.bed = bed
        self.site = HostileSite(bed.home)
        self._start(self.site.address(GOOD) + "/", settings)
        self.site.ask("")
        width, height = bed.picture().size
        self.centre = width // 2, height // 2
        self.picture = bed.picture()
        self._before = self._state()

    def _start(self, url, settings):
        self.bed.start_sealed(url=url, **settings)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.site.end()

    def begin(self, script):
        """Has the page run the script on a click; returns the step's number."""
        number = self.site.prepare(script)
        self.bed.display.click(*self.centre)
        return number

    def attempt(self, script, leads_to=None):
        """What the script came to, while nothing else changed, but for the page that it leads to."""
        page, number = self.site.page, self.begin(script)
        if leads_to:
            wait_for(f"{leads_to} after {script}", lambda: self.site.page != page and self.shows_page(leads_to))
            return self.check(script)
        answer = self.site.answer(number)
        self.check(script)
        return answer

    def events(self, act=lambda: None):
        """What the page saw of what the test did, all of which has been dealt with then."""
        self.site.ask("seen.length = 0")
        count = len(self.site.seen)
        act()

        def is_at_edge():
            self.bed.display.fake([(X.MotionNotify, 0, 9, 9), (X.MotionNotify, 0, 3, 3)])
            return self.site.seen[count:]
        return wait_for("pointer at the edge", is_at_edge)[0]

    def hover(self):
        x, y = self.centre
        self.bed.display.fake([(X.MotionNotify, 0, x - 9, y), (X.MotionNotify, 0, x, y)])

    def click(self, button=1):
        self.bed.display.fake([(X.MotionNotify, 0, *self.centre), (X.ButtonPress, button), (X.ButtonRelease, button)])

    @contextlib.contextmanager
    def drag(self):
        """Drags what is in the page's upper half to the lower half, and drops it there at the end."""
        x, y = self.centre
        fake = self.bed.display.fake
        self.site.ask("seen.length = 0")
        fake([(X.MotionNotify, 0, x, y // 2), (X.ButtonPress, 1)])

        for event, height in ("dragstart", y // 2), ("dragover", y + y // 2):
            steps = itertools.cycle(range(0, 90, 3))
            wait_for(event, lambda: fake([(X.MotionNotify, 0, x + next(steps), height)]) or self.saw(event))
        yield
        fake([(X.ButtonRelease, 1)])

    def saw(self, event):
        return self.site.ask(f"return seen.includes('{event}')")

    def return_to(self, path):
        """A page of the site that was not shown before."""
        def is_there():
            # The page that gets it may be on its way out already.
            address = f"home + '{path}'"
            self.site.offer(f"if (!location.href.startsWith({address})) location = {address}", is_immediate=True)
            with contextlib.suppress(AssertionError):
                return wait_for(path, lambda: self.shows_page(path), deadline=3)
        wait_for(f"page of the site at {path}", is_there)

    def shows_page(self, path):
        return self.site.page.startswith(path + "&")

    def shows_other(self):
        return self.bed.picture() != self.picture

    def check(self, what):
        """The page answers, and is all that shows."""
        self.site.answer(self.site.offer(is_immediate=True), f"fence after {what}")
        wait_for(f"the page alone after {what}", lambda: (
            self.bed.display.windows() == self._before["windows"] and not self.shows_other()))

    def check_machine(self):
        """No process was started and no file was written, but the engine's own."""
        assert not self.new_files() and not self._state()["processes"] - self._before["processes"] - ENGINE_PROCESSES

    def new_files(self):
        return self._state()["files"] - self._before["files"]

    def _state(self):
        home = self.bed.home.folder
        files = {path for path in home.rglob("*") if path.relative_to(home).parts[0] not in ENGINE_FOLDERS}
        return {"windows": self.bed.display.windows(), "files": files,
                "processes": set(descendants(self.bed.process.pid).values())}


class BareSiege(Siege):
    """The same page in a window that closes nothing: whether an attempt has the effect that the program must prevent."""

    def _start(self, url, _):
        try:
            gi = pytest.importorskip("gi")
            gi.require_version("WebKit", "6.0")
        except ValueError:
            pytest.skip("needs the engine's bindings: see packaging/packages/test.txt")
        environment = {**self.bed.display.environment, "GDK_DEBUG": "gl-disable"}
        program = Path(__file__).with_name("bare.py")
        self.bed.process = self.bed.home.start("/usr/bin/python3", program, url, log="bare", environment=environment)

    def wait_new_file(self, script):
        files = wait_for(f"file of {script}", self.new_files)
        self._before["files"] |= files

    def escape(self, number):
        """Closes what shows, one by one, until the step has come to its end."""
        def is_closed():
            self.bed.display.press("Escape")
            return number in self.site.answers and not self.shows_other()
        wait_for("end of what showed", is_closed)
