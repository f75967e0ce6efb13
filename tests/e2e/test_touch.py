"""Fingers on a touch screen press; they neither zoom nor open a menu."""

import time

import pytest
from rig.siege import BareSiege, Siege
from rig.waiting import wait_for

LONG_PRESS = 1.0  # seconds; the toolkit waits for half of it


def press_long(siege):
    end = time.monotonic() + LONG_PRESS
    with siege.bed.display.fingers.hold():
        wait_for("long press", lambda: time.monotonic() >= end)


def scale(siege):
    return siege.site.ask("return visualViewport.scale")


@pytest.mark.on("touch screen")
def test_fingers_only_press(bed):
    with Siege(bed) as siege:
        fingers = bed.display.fingers
        for _ in range(2):
            with fingers.hold():
                pass
        wait_for("double tap", lambda: siege.saw("click"))
        fingers.spread()
        siege.events()
        assert scale(siege) == 1
        press_long(siege)
        wait_for("event of a menu", lambda: siege.saw("contextmenu"))
        siege.check("touches")


@pytest.mark.on("touch screen")
def test_fingers_zoom_the_bare_engine(bed):
    with BareSiege(bed) as siege:
        wait_for("zoomed page", lambda: bed.display.fingers.spread() or scale(siege) > 1)
        windows = bed.display.windows()
        press_long(siege)
        wait_for("menu", lambda: bed.display.windows() != windows)
