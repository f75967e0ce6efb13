"""Keys by which toolkits, desktops and engines open something, in a text field of a sealed page."""

from string import ascii_lowercase

import pytest
from rig.waiting import wait_for

KEYS = ("F7", "Menu", "shift+F10", "ctrl+shift+i", "ctrl+shift+d", "ctrl+period", "F10", "F11", "F12",
        "alt+F4", "ctrl+q", "ctrl+w", "Super_L")


@pytest.mark.on("openbox", "no window manager")
def test_keys_open_and_end_nothing(bed):
    bed.settings(url=bed.site.url + "field", autoStartKiosk=True)
    bed.start()
    bed.wait_sealed()
    wait_for("text field with the keyboard", lambda: "/typed/" in bed.site.paths)
    windows = bed.display.windows()

    typed = ""
    for key, letter in zip(("Shift_L", *KEYS), ascii_lowercase):
        bed.display.press(key)
        bed.display.press(letter)
        typed += letter
        wait_for(f"letter after {key}", lambda: bed.process.poll() is not None or f"/typed/{typed}" in bed.site.paths)
        assert bed.process.poll() is None, key
        assert bed.display.windows() == windows and bed.is_sealed(), key
    bed.unseal()
    bed.close()
