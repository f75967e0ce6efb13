"""The one way out of a sealed run: three keys, held for a second."""

import time

import pytest
from rig.bed import GESTURE
from rig.site import page_picture
from rig.waiting import wait_for

DISPLAYS = pytest.mark.on("openbox", "no window manager", "sway")


@DISPLAYS
def test_held_on_it_ends_the_run_once(bed):
    bed.seal_page("keys")
    requests = bed.site.requests
    with bed.display.hold(GESTURE):
        start = time.monotonic()
        bed.wait_unsealed()
        assert time.monotonic() - start >= 1
        keep(bed.is_unsealed, 1.5)
    assert bed.site.requests == requests
    bed.seal()
    bed.unseal()
    bed.close()


@DISPLAYS
def test_held_since_before_the_run_it_does_not_end_it(bed):
    bed.settings(url=bed.site.url + "keys", autoStartKiosk=True)
    bed.start()
    bed.display.focus_setup()
    with bed.display.hold(GESTURE):
        bed.wait_sealed()
        keep(bed.is_sealed, 1.5)
    bed.seen_keys()  # By now the release has been noticed.
    bed.unseal()
    bed.close()


@DISPLAYS
def test_held_too_short_it_only_shows_itself_beside_a_list_too(bed):
    bed.seal_page("keys")
    for _ in range(2):
        bed.hold(0.5, lambda: wait_indicator(bed))
        bed.wait_sealed()
    assert bed.seen_keys() == ([], "x")
    bed.hold(0.5, bed.open_list)
    bed.close_list()
    bed.hold(0.5, lambda: wait_indicator(bed))
    bed.wait_sealed()
    bed.open_list()
    bed.hold(0.5)
    bed.close_list()
    bed.open_list()
    bed.unseal()
    bed.close()


def keep(condition, seconds):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        assert condition()


def wait_indicator(bed):
    """Until something shows in the middle of the page."""
    def is_shown():
        picture = bed.picture()
        middle = picture.width // 2, picture.height // 2
        return picture.getpixel(middle) != page_picture(picture.size).getpixel(middle)
    wait_for("indicator of the hold", is_shown)
