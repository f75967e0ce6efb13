"""Several screens, and screens that come, go and change during a run."""

import pytest


@pytest.mark.on("three outputs")
def test_run_survives_screens_that_come_and_go(bed):
    screens = bed.display
    bed.choose("DUMMY1")
    bed.start()
    bed.wait_sealed("DUMMY1")

    screens.unplug("DUMMY2")
    bed.wait_sealed("DUMMY1")
    screens.plug("DUMMY3", "640x480", "1024x0")
    bed.wait_sealed("DUMMY1")
    screens.plug("DUMMY1", "1280x1024", "2304x0")
    bed.wait_sealed("DUMMY1")
    screens.unplug("DUMMY1")
    bed.wait_sealed("DUMMY0")
    screens.plug("DUMMY1", "800x600", "2304x0")
    bed.wait_sealed("DUMMY1")

    screens.unplug("DUMMY0", "DUMMY1", "DUMMY3")
    assert not screens.outputs()
    screens.plug("DUMMY0", "1024x768", "0x0", "--primary")
    bed.wait_sealed("DUMMY0")
    bed.unseal()


@pytest.mark.on("three outputs")
def test_primary_screen_is_taken_without_a_choice_and_may_move(bed):
    bed.display.plug("DUMMY2", "1280x720", "1024x0", "--primary")
    bed.start()
    bed.wait_sealed("DUMMY2")
    bed.display.unplug("DUMMY0")
    bed.display.plug("DUMMY2", "1280x720", "0x0", "--primary")
    bed.wait_sealed("DUMMY2")
    bed.unseal()


@pytest.mark.on("three outputs")
def test_screens_that_mirror_the_kiosks_show_the_page(bed):
    screens = bed.display
    screens.plug("DUMMY2", "800x600", "2304x0")
    bed.choose("DUMMY1")
    bed.start()
    bed.wait_sealed("DUMMY1")

    for output, mode, position in (("DUMMY2", "1280x720", "1024x0"), ("DUMMY0", "640x480", "2304x0"),
                                   ("DUMMY2", "1280x720", "2304x0")):
        screens.plug(output, mode, position)
        bed.wait_sealed("DUMMY1")
    bed.unseal()


@pytest.mark.on("sway, two outputs")
def test_wayland_run_survives_outputs_that_come_and_go(bed):
    screens = bed.display
    bed.choose("X11-2")
    bed.start()
    bed.wait_sealed("X11-2")

    screens.plug()
    bed.wait_sealed("X11-2")
    screens.unplug("X11-1")
    bed.wait_sealed("X11-2")
    screens.unplug("X11-2")
    bed.wait_sealed("X11-3")
    screens.unplug("X11-3")
    screens.plug()
    bed.wait_sealed("X11-4")


@pytest.mark.on("cage")
def test_no_cover_buries_the_page_where_windows_cannot_be_placed(bed):
    bed.start()
    bed.wait_sealed("all")
