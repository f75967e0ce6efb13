"""The countdown that a stored setting starts."""

import pytest
from rig.bed import Bed
from rig.waiting import wait_for


@pytest.mark.on("openbox")
def test_escape_cancels_the_countdown(bed):
    """A second program on its own display, started after Escape, shows how long a countdown takes."""
    bed.start()
    bed.display.focus_setup()
    first = bed.display.picture("screen")
    wait_for("running countdown", lambda: bed.display.picture("screen") != first)
    bed.display.press("Escape")

    control = Bed("openbox")
    try:
        control.start()
        control.wait_sealed()
    finally:
        control.end()
    assert bed.display.setup_window() and bed.site.requests == 0
    bed.seal()
