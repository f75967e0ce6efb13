"""Settings files that are damaged, and the countdown that a stored setting starts."""

import pytest
from rig.bed import Bed
from rig.waiting import wait_for


@pytest.mark.on("openbox")
def test_truncated_settings_are_set_aside_and_named(bed):
    damaged = bed.defaults.read_bytes()[:-9]
    bed.defaults.write_bytes(damaged)
    bed.start()
    bed.display.focus_setup()

    aside = [path for path in bed.defaults.parent.iterdir()
             if path != bed.defaults and path.is_file() and path.read_bytes() == damaged]
    assert len(aside) == 1
    assert aside[0].name in bed.log


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
