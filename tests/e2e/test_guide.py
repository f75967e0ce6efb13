"""The setup guide in a window of its own, as a machine without a browser shows it, and as root sees it anywhere."""

import pytest
from rig.a11y import Screen
from rig.waiting import wait_for

LINK = "SETUP GUIDE ↗"
CLOSE = "CLOSE"
# By which the toolkit or the engine open something of their own, or break.
TRAPS = "F7", "F10", "F12", "shift+F10", "Menu", "ctrl+period", "ctrl+semicolon", "ctrl+shift+i", "ctrl+p", "ctrl+n"


@pytest.fixture
def screen(bed):
    return Screen(bed)


def is_open(screen):
    return any(widget.name == CLOSE for widget in screen.widgets())


def open_guide(bed, screen):
    screen.press(LINK)
    wait_for("guide", lambda: is_open(screen))


@pytest.mark.on("openbox", "no window manager", "sway")
def test_guide_is_read_by_keys_and_leads_nowhere(bed, screen):
    bed.settings(url=bed.site.url)
    bed.start()
    for close in "Escape", "ctrl+w":
        open_guide(bed, screen)

        def is_scrolled():
            before = bed.picture()
            bed.display.press("Page_Down")
            return bed.picture() != before
        wait_for("page that scrolls", is_scrolled)
        windows = bed.display.windows()
        for keys in TRAPS:
            bed.display.press(keys)
        bed.display.press("Home")
        wait_for("page that still scrolls", is_scrolled)
        assert bed.display.windows() == windows and bed.process.poll() is None
        bed.display.press(close)
        wait_for("closed guide", lambda: not is_open(screen))
    bed.close()


@pytest.mark.on("openbox")
def test_guide_goes_when_a_run_begins(bed, screen):
    bed.settings(url=bed.site.url)
    bed.start()
    open_guide(bed, screen)
    bed.display.focus_setup()
    bed.hold(1.5)
    bed.wait_sealed()
    assert not is_open(screen)
    bed.unseal()
    assert not is_open(screen)
    bed.close()
