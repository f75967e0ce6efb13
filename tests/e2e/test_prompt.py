"""The exit password, asked for over the sealed page."""

import time

import pytest
from rig.waiting import wait_for

TYPED = ("c", "a", "f", "dead_acute", "e")
WRONG = [(*TYPED, "space"), ("shift+c", *TYPED[1:]), ()]
RED = (255, 0, 0)


@pytest.mark.on("openbox", "sway")
def test_nothing_but_the_password_ends_the_run(bed):
    """Whatever the page does to get the keyboard meanwhile. It is stored decomposed, and typed composed."""
    bed.display.use_layout("de")
    bed.seal_page("thief", "cafe\u0301")
    for keys in WRONG:
        open_prompt(bed)
        submit(bed, keys)
        wait_for("red border", lambda: is_red(bed.picture()))
        bed.hold(1.2)
        bed.display.press("Escape")
        bed.wait_sealed()
        assert bed.seen_keys()[0] == []

    open_prompt(bed)
    submit(bed, TYPED)
    bed.wait_unsealed()
    bed.close()


@pytest.mark.on("openbox")
def test_prompt_closes_by_itself_ten_seconds_after_the_last_key(bed):
    bed.seal_page("keys", "password")
    open_prompt(bed)
    start = time.monotonic()
    bed.display.press("a")
    wait_for("end of the prompt", lambda: not bed.is_prompt_open(), deadline=15)
    assert time.monotonic() - start >= 10
    bed.wait_sealed()
    assert bed.seen_keys() == ([], "x")


def open_prompt(bed):
    bed.hold(1, lambda: wait_for("exit prompt", bed.is_prompt_open))
    assert not is_red(bed.picture())


def submit(bed, keys):
    for key in (*keys, "Return"):
        bed.display.press(key)


def is_red(picture):
    return RED in (colour for _, colour in picture.getcolors(1 << 24))
