"""The keys that a sealed page has, and those that nobody has."""

import pytest
from rig.waiting import wait_for

PAGE_KEYS = {  # each with the name that pages know it by
    "a": "KeyA", "shift+a": "KeyA", "1": "Digit1", "altgr+q": "KeyQ", "alt+e": "KeyE", "alt+F4": "F4", "alt+Tab": "Tab",
    "Left": "ArrowLeft", "Right": "ArrowRight", "Up": "ArrowUp", "Down": "ArrowDown",
    **{key: key for key in ("F1", "F2", "F3", "F4", "F5", "F6", "F8", "F9", "Escape", "Tab")}}
KEPT_KEYS = ("F7", "F10", "F11", "F12", "shift+F10", "Menu", "Print", "ctrl+a", "ctrl+w", "ctrl+q", "ctrl+shift+i",
             "ctrl+shift+d", "ctrl+period", "ctrl+alt+t", "super+e", "super+shift+e", "Super_L", "XF86AudioMute")


@pytest.mark.on("openbox", "no window manager", "sway")
def test_page_sees_whole_keys_or_nothing(bed):
    bed.display.use_layout("de")
    bed.seal_page("keys")
    windows = bed.display.windows()

    bed.display.press("dead_acute")
    bed.display.press("e")
    # The engine names keys that compose a character only as they go up.
    assert bed.seen_keys() == (["keyup Equal", "keyup KeyE"], "éx")
    for keys in PAGE_KEYS:
        bed.display.press(keys)
    pairs = [f"{kind} {code}" for code in PAGE_KEYS.values() for kind in ("keydown", "keyup")]
    assert bed.seen_keys() == (pairs, "éxaA1@")

    for keys in ("Shift_L",) * 5 + KEPT_KEYS:
        bed.display.press(keys)
        assert (bed.process.poll(), bed.display.windows()) == (None, windows), keys
    assert (bed.seen_keys()[0], bed.is_sealed()) == ([], True)
    bed.unseal()
    bed.close()


@pytest.mark.on("openbox", "sway")
def test_keys_that_a_busy_page_answers_late_are_not_pressed_again(bed):
    bed.seal_page("busy")
    bed.display.press("b")
    for key in ("Super_L", *"a" * 20):
        bed.display.press(key)
    assert bed.seen_keys()[1] == "b" + "a" * 20 + "x"
    bed.display.press("a")
    assert bed.seen_keys() == (["keydown KeyA", "keyup KeyA"], "b" + "a" * 20 + "xax")
    bed.unseal()
    bed.close()


@pytest.mark.on("openbox", "sway")
def test_date_picker_that_the_page_takes_away_leaves_the_keyboard(bed):
    bed.seal_page("picker")
    bed.display.press("c")
    wait_for("end of the picker", lambda: "/removed" in bed.site.paths)
    assert bed.seen_keys()[1].endswith("x")
    bed.unseal()
    bed.close()
