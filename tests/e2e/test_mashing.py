"""Random keys and buttons on a sealed page."""

import contextlib
import os
from random import Random

import pytest
from rig.waiting import wait_for
from Xlib import X

SANITIZED = os.environ.get("QUILLOX_SANITIZED") == "1"
SEEDS, EVENTS = range(10), 10_000 if SANITIZED else 2_000
RELEASES = {X.KeyPress: X.KeyRelease, X.ButtonPress: X.ButtonRelease}
ESCAPE_AND_X = [f"{kind} {code}" for code in ("Escape", "KeyX") for kind in ("keydown", "keyup")]
PASSWORD = "4711"  # Caps Lock may be on.


@pytest.mark.on("openbox with bindings")
def test_mashing_opens_and_ends_nothing(bed):
    bed.seal_page("keys", PASSWORD)
    windows = bed.display.windows()
    size = bed.picture().size
    for seed in SEEDS:
        if seed % 2:
            bed.open_prompt()
        bed.display.fake(mash(Random(seed), size))

        wait_for(f"page with the keyboard after seed {seed}", lambda: is_back(bed), deadline=60)
        assert bed.process.poll() is None and bed.display.windows() == windows
    assert not bed.display.fired()

    bed.open_prompt()
    for key in (*PASSWORD, "Return"):
        bed.display.press(key)
    bed.wait_unsealed()
    bed.close()


def is_back(bed):
    """Whether the page is all that shows, and has dealt with an Escape and an X that are pressed for it."""
    count = len(bed.site.told)
    bed.display.press("Escape")
    bed.display.press("x")
    with contextlib.suppress(AssertionError):
        wait_for("answer of the page", lambda: bed.site.told[count:], deadline=1)
    return bed.is_sealed() and bed.site.told[count:] and bed.site.told[-1][0][-4:] == ESCAPE_AND_X


def mash(random, size):
    """Random inputs; in the end all keys and buttons are up."""
    down = []
    for _ in range(EVENTS):
        if down and random.random() < 0.5:
            press, detail = down.pop(random.randrange(len(down)))
            yield RELEASES[press], detail
        elif random.random() < 0.1:
            yield X.MotionNotify, 0, *map(random.randrange, size)
        else:
            key = X.KeyPress, random.randrange(8, 256)
            pressed = key if random.random() < 0.8 else (X.ButtonPress, random.randrange(1, 10))
            if pressed not in down:
                down.append(pressed)
                yield pressed
    for press, detail in down:
        yield RELEASES[press], detail
