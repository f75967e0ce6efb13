"""Sealing and unsealing on one screen."""

import pytest
from rig.waiting import wait_for


@pytest.mark.on("openbox", "xfwm4", "no window manager", "sway")
def test_seals_by_itself_and_gives_the_desktop_back(bed):
    bed.display.open_bystander()
    windows = bed.display.windows()
    output, = bed.display.outputs()
    picture = bed.display.picture(output)

    bed.start()
    bed.wait_sealed()
    bed.unseal()
    assert windows <= bed.display.windows()
    bed.seal()
    bed.unseal()
    bed.close()

    wait_for("the desktop as it was", lambda: bed.display.windows() == windows and bed.display.picture(output) == picture)
