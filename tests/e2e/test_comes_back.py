"""With KEEP ALIVE on the program comes back from whatever is no quit, and is sealed again by itself."""

import json
import shlex
import signal
import time
from concurrent.futures import ThreadPoolExecutor
from contextlib import ExitStack

import pytest
from rig.a11y import Screen
from rig.bed import GESTURE, Bed
from rig.installed import install
from rig.revival import is_keyboard_held, lives, next_life, wait_sealed_again
from rig.user_manager import UserManager
from rig.waiting import wait_for
from rig.x11 import BACKGROUND

BACK = 10  # seconds from a first crash to the sealed page, with the countdown
SLACK = 10  # for a machine that is busy with other tests, and with four displays at once
SILENCE = 30  # seconds until a program that hangs is ended
CRASHES = 5


@pytest.fixture
def beds():
    """Four displays without a window manager, where nothing runs yet."""
    with ExitStack() as stack:
        beds = []
        for _ in range(4):
            beds.append(Bed("no window manager"))
            stack.callback(beds[-1].end)
        yield beds


def come_back_in_time(bed, end, limit):
    begin = time.monotonic()
    bed.process.end(end)
    wait_sealed_again(bed)
    seconds = time.monotonic() - begin
    print(f"{end.name}: sealed again after {seconds:.1f} s")
    assert seconds < limit


def quit_program(bed):
    """The sealed program cannot be told by its windows: a confined one names another process in them."""
    with bed.display.hold(GESTURE):
        wait_for("end of the run", lambda: not is_keyboard_held(bed.display.environment["DISPLAY"]))
    bed.display.close_setup()


@pytest.mark.x11
def test_autostart_entry_starts_it_again_until_it_is_quit(beds):
    words = switch_on(beds[0])
    parents = {}
    for bed in beds:
        bed.settings(url=bed.site.url, autoStartKiosk=bed is not beds[3])
        parents[bed] = bed.home.start(*words, log="quillox", environment=bed.display.environment)

    def crash(bed):
        wait_sealed_again(bed)
        come_back_in_time(bed, signal.SIGSEGV, BACK + SLACK)
        come_back_in_time(bed, signal.SIGKILL, BACK + SLACK)
        quit_program(bed)
        assert parents[bed].wait(timeout=30) == 0
        assert not lives(bed.home)

    def hang(bed):
        wait_sealed_again(bed)
        come_back_in_time(bed, signal.SIGSTOP, SILENCE + BACK + SLACK)

    def crash_in_a_row(bed):
        for _ in range(CRASHES):
            next_life(bed).end(signal.SIGSEGV)
        wait_sealed_again(bed)

    def crash_in_the_setup(bed):
        for _ in range(2):
            next_life(bed)
            bed.wait_unsealed()
            bed.process.end(signal.SIGSEGV)
        next_life(bed)
        bed.wait_unsealed()
        bed.display.close_setup()
        assert parents[bed].wait(timeout=30) == 0

    with ThreadPoolExecutor() as pool:
        for each in [pool.submit(*pair) for pair in zip((crash, hang, crash_in_a_row, crash_in_the_setup), beds)]:
            each.result()


def switch_on(bed):
    """Switches KEEP ALIVE on as an operator does; returns the words by which a session then starts the program."""
    bed.settings(url=bed.site.url)
    screen = Screen(bed)
    bed.start()
    bed.display.focus_setup()
    screen.press("KEEP ALIVE")
    entry = bed.home.folder / "config_home/autostart/com.orvendal.quillox.watchdog.desktop"
    wait_for("autostart entry", entry.exists)
    wait_for("choice on the disk", lambda: json.loads(bed.defaults.read_text())["kioskSettings"]["keepAlive"])
    bed.close()
    bed.process = None
    return next(shlex.split(line.removeprefix("Exec=")) for line in entry.read_text().splitlines() if line.startswith("Exec="))


@pytest.mark.on("no window manager")
def test_service_manager_starts_it_again_until_it_is_quit(bed):
    steps = steps_to_keep_alive(bed)
    bed.settings(url=bed.site.url, autoStartKiosk=False)
    prefix = install(bed)
    manager = UserManager(bed)
    try:
        manager.begin_session()
        bed.process = manager.start(prefix / "bin/quillox", log="quillox")
        next_life(bed)
        bed.display.focus_setup()
        for key in ["Tab"] * steps + ["space"]:
            press_and_see(bed, key)
        wait_for("enabled unit", manager.is_enabled)
        bed.display.close_setup()
        wait_for("its end", lambda: not lives(bed.home))
        manager.end_session()
        manager.run(prefix / "bin/quillox", "config", "set", "autoStartKiosk", "true")
        manager.begin_session()

        wait_sealed_again(bed)
        come_back_in_time(bed, signal.SIGSEGV, BACK + SLACK)
        come_back_in_time(bed, signal.SIGSTOP, BACK + SLACK)
        for _ in range(CRASHES - 2):
            bed.process.end(signal.SIGKILL)
            next_life(bed)
        bed.wait_sealed()
        quit_program(bed)
        wait_for("its end", lambda: manager.state() == "dead")
        assert not lives(bed.home)
    finally:
        manager.end()


def press_and_see(bed, key):
    """Presses a key and waits until it shows; one that comes before the window is painted is lost."""
    empty = tuple(BACKGROUND.to_bytes(3, "big"))
    wait_for("painted setup", lambda: bed.picture().getpixel((9, 9)) != empty)
    before = bed.picture()
    bed.display.press(key)
    wait_for(f"effect of {key}", lambda: bed.picture() != before)


def steps_to_keep_alive(bed):
    """How many times Tab is pressed in the setup until KEEP ALIVE has the focus."""
    bed.settings(url=bed.site.url)
    screen = Screen(bed)
    bed.start()
    bed.display.focus_setup()
    steps = 1
    while screen.tab().name != "KEEP ALIVE":
        steps += 1
    bed.close()
    return steps
