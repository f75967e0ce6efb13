"""Where visitors walk away, the page goes home: once, and whatever the page does about it."""

import contextlib
import os
import signal
import time

import pytest
from rig import site
from rig.processes import descendants
from rig.waiting import wait_for
from Xlib import X

LIMIT = 1  # seconds without input
CHECK = 5  # seconds between two looks at them
FORCE = 3  # seconds until a page that does not leave is made to
HOME = site.PAGE + b"<script>addEventListener('click', () => { location = '/trap' })</script>"
TRAP = site.PAGE.replace(site.CENTRE.encode(), b"#406080") + b"""<style>select { position: fixed; left: 20%; top: 20%; width: 60%; height: 40%; opacity: 0 }</style>
<script>const caught = () => fetch('/caught'), later = act => onload = () => setTimeout(act, 100)</script>"""
TRAPS = {
    "an open list": b"<select><option>one<option>two<option>three</select>",
    "a plain page": b"<script>addEventListener('click', caught)</script>",
    "alert for ever": b"<script>addEventListener('click', () => { caught(); setTimeout(() => { for (;;) alert('Stay!') }, 100) })</script>",
    "a question on leaving": b"<script>onbeforeunload = event => { event.preventDefault(); return 'Stay!' }; addEventListener('click', caught)</script>",
    "a script without end": b"<script>addEventListener('click', () => { caught(); setTimeout(() => { for (;;); }, 100) })</script>",
    "a full screen of its own": b"<script>addEventListener('click', () => { document.documentElement.requestFullscreen?.(); document.documentElement.webkitRequestFullscreen?.(); caught() })</script>",
    "a process that is killed": b"<script>addEventListener('click', caught)</script>",
}


@pytest.fixture
def idle(bed, monkeypatch):
    monkeypatch.setitem(site.PAGES, "/home", HOME)
    monkeypatch.setitem(site.PAGES, "/trap", TRAP)
    bed.settings(url=bed.site.url + "home", autoStartKiosk=True, idleResetSeconds=LIMIT)
    bed.start()
    bed.wait_sealed()
    return bed


def homes(bed):
    return bed.site.paths.count("/home")


def wait_home(bed, loads, since, force=0):
    """Until the page, which was asked for so often, was asked for again and shows; the last input was at `since`."""
    wait_for("way home", lambda: homes(bed) > loads, deadline=LIMIT + CHECK + force + 0.5)
    assert time.monotonic() - since > LIMIT
    bed.wait_sealed()
    assert homes(bed) == loads + 1


@pytest.mark.on("openbox")
def test_once_for_each_quiet_time(idle):
    def move_and_wait(x):
        loads, since = homes(idle), time.monotonic()
        idle.display.fake([(X.MotionNotify, 0, x, 300)])
        wait_home(idle, loads, since)
        return loads + 1

    def wait_for_another_look(meanwhile=lambda: None):
        end = time.monotonic() + LIMIT + CHECK + 0.5
        wait_for("another look", lambda: meanwhile() or time.monotonic() > end)

    loads = move_and_wait(300)
    wait_for_another_look()
    assert homes(idle) == loads
    loads = move_and_wait(310)
    wait_for_another_look(lambda: idle.display.press("a"))
    assert homes(idle) == loads


@pytest.mark.on("openbox")
def test_from_every_trap(idle):
    windows = idle.display.windows()
    for name, trap in TRAPS.items():
        site.PAGES["/trap"] = TRAP + trap
        idle.site.paths.clear()
        idle.display.click(400, 300)
        wait_for(f"page with {name}", lambda: idle.picture().getpixel((400, 300)) == (0x40, 0x60, 0x80))

        def is_caught():
            idle.display.click(400, 300)
            # Another click would close the list again.
            with contextlib.suppress(AssertionError):
                return wait_for(name, lambda: idle.display.windows() - windows if "list" in name else "/caught" in idle.site.paths, deadline=2)
        wait_for(name, is_caught)
        since, loads = time.monotonic(), homes(idle)
        if "killed" in name:
            for pid, process in descendants(idle.process.pid).items():
                if process == "WebKitWebProces":
                    os.kill(pid, signal.SIGKILL)
        wait_home(idle, loads, since, FORCE)
        assert idle.display.windows() == windows, name
