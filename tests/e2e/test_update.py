"""An installation that maintains itself: new versions come at night or when asked for, and go when they do not work."""

import threading
import time
from datetime import datetime, timezone
from pathlib import Path

import pytest
from rig.a11y import Screen
from rig.feed import Feed
from rig.revival import lives, next_life
from rig.site import page_picture
from rig.waiting import DEADLINE, wait_for

CRASHES = "#!/bin/sh\nkill -SEGV $$\n"
BACK = 120  # seconds until the version before one that does not work is sealed again
CLOCK = "usr/lib/*/faketime/libfaketimeMT.so.1"
MINUTE = 60


@pytest.fixture
def screen(bed):
    return Screen(bed)


@pytest.fixture
def feed(bed):
    feed = Feed(bed)
    yield feed
    feed.end()


class Clock:
    """The program's own, which the test puts on."""

    def __init__(self, home, hour):
        library = next(Path("/").glob(CLOCK), None) or pytest.skip("needs libfaketime: see packaging/packages/test.txt")
        self._file = home.folder / "clock"
        self.put_on(0)
        now = datetime.now(timezone.utc)
        self._begin = hour * 60 + now.minute
        # Hours of the time zone count westwards.
        self.environment = {"LD_PRELOAD": str(library), "FAKETIME_TIMESTAMP_FILE": str(self._file),
                            "FAKETIME_NO_CACHE": "1", "TZ": f"TEST{now.hour - hour:+d}"}

    def put_on(self, minutes):
        self._file.write_text(f"+{minutes * MINUTE}\n")

    def reach(self, hour, minute):
        """The next time that it is so late, as whole minutes."""
        self.put_on((hour * 60 + minute - self._begin) % (24 * 60))


class Watch:
    """Looks at the screen all the time, from another thread, and remembers what was not the sealed page."""

    def __init__(self, bed):
        self._bed, self._others, self._looks = bed, [], 0
        self._is_over = threading.Event()
        self._thread = threading.Thread(target=self._look)

    def _look(self):
        while not self._is_over.is_set():
            picture = self._bed.picture()
            self._looks += 1
            if picture != page_picture(picture.size):
                self._others.append(picture)

    def __enter__(self):
        self._thread.start()

    def __exit__(self, *_):
        self._is_over.set()
        self._thread.join()
        assert self._looks and not self._others, f"{len(self._others)} of {self._looks} looks met something else"


def logs(bed, line):
    return lambda: f"Quillox: {line}" in bed.log


def install_by_hand(bed, screen, when_offered=lambda: None):
    bed.display.focus_setup()
    screen.press("CHECK NOW")
    screen.wait("Install")
    when_offered()
    bed.display.press("Return")


@pytest.mark.on("openbox")
def test_comes_at_night_under_a_sealed_page(bed, feed):
    clock = Clock(bed.home, hour=14)
    feed.install("1.0.0")
    bed.settings(url=bed.site.url, autoStartKiosk=True)
    bed.process = feed.start(bed.display, **clock.environment)
    bed.wait_sealed()
    feed.publish("1.1.0")
    with Watch(bed):
        clock.put_on(16)
        wait_for("download", logs(bed, "version 1.1.0 is ready to be installed."))
        assert feed.current == "1.0.0"
    clock.reach(3, 20)
    wait_for("installation", lambda: feed.current == "1.1.0")
    wait_for("trial", logs(bed, "version 1.1.0 works."))
    bed.wait_sealed()
    assert "not work" not in bed.log


@pytest.mark.on("openbox")
def test_version_that_crashes_goes_and_the_one_before_is_sealed(bed, screen, feed):
    feed.install("1.0.0")
    feed.publish("1.1.0")
    bed.settings(url=bed.site.url)
    bed.process = feed.start(bed.display)
    install_by_hand(bed, screen)
    wait_for("trial", logs(bed, "version 1.1.0 works."))
    assert feed.current == "1.1.0"

    feed.publish("1.2.0", CRASHES)
    next_life(bed)
    bed.run("config", "set", "autoStartKiosk", "true")
    install_by_hand(bed, screen)
    begin = time.monotonic()
    wait_for("the version before", logs(bed, "version 1.2.0 does not work; 1.1.0 is back."))
    next_life(bed)
    bed.wait_sealed()
    print(f"sealed again after {time.monotonic() - begin:.1f} s")
    assert time.monotonic() - begin < BACK and feed.current == "1.1.0"
    bed.unseal()
    bed.display.focus_setup()
    screen.press("CHECK NOW")
    screen.wait("The update did not succeed")
    assert "1.2.0 did not work here and was rolled back" in bed.log


@pytest.mark.on("openbox")
def test_killed_installation_leaves_a_version_that_seals(bed, screen, feed):
    moments = {
        "half of the archive is there": lambda: list(feed.root.glob("update/*.archive")),
        "it is being unpacked": (feed.root / "versions/.staging").exists,
        "it is the current version": lambda: feed.current == "1.1.0",
    }
    feed.install("1.0.0")
    feed.publish("1.1.0")
    for what, has_come in moments.items():
        bed.settings(url=bed.site.url)
        bed.process = feed.start(bed.display)
        install_by_hand(bed, screen, lambda: feed.hold_back(what.startswith("half")))
        kill_when(bed, has_come)
        feed.hold_back(False)
        print(f"killed when {what}: {feed.current} starts")
        bed.settings(url=bed.site.url, autoStartKiosk=True)
        bed.process = feed.start(bed.display)
        bed.wait_sealed()
        kill_when(bed, lambda: True)


def kill_when(bed, has_come):
    """Kills the program at once when something is so; the moment may be short."""
    deadline = time.monotonic() + DEADLINE
    while not has_come():
        assert time.monotonic() < deadline, bed.log
    bed.process.kill()
    bed.process.wait()
    wait_for("end of its processes", lambda: not lives(bed.home))
