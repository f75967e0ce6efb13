"""The keyboard is the sealed run's alone, and everybody's again after it."""

import pytest
from rig.canaries import BINDINGS, press_each
from rig.waiting import wait_for
from Xlib import X
from Xlib.display import Display

DISPLAYS = ("openbox with bindings", "xfwm4 with bindings", "bindings, no window manager", "sway with bindings")
NO_TAP = "Quillox: could not create event tap — Accessibility permission missing."


@pytest.mark.on(*DISPLAYS)
def test_no_binding_fires_while_sealed(bed):
    """Nor while a list of the page is open, nor after it. All fire before, and again after the run."""
    press_each(bed.display)
    fired = bed.display.fired()
    bed.seal_page("keys")
    press_all(bed)
    bed.open_list()
    press_all(bed, is_page_listening=False)
    bed.close_list()
    press_all(bed)
    assert bed.display.fired() == fired

    bed.unseal()
    press_each(bed.display)
    bed.close()


@pytest.mark.on(*DISPLAYS)
def test_killed_run_leaves_the_keyboard_as_it_was(bed):
    bed.seal_page("keys")
    bed.process.kill()
    bed.process.wait()
    wait_for("end of its windows", lambda: not bed.display.sealed_windows(bed.process.pid))
    press_each(bed.display)

    bed.process = None
    bed.start()
    bed.wait_sealed()
    bed.unseal()
    bed.close()


@pytest.mark.on("openbox with bindings", "bindings, no window manager")
def test_keyboard_that_another_client_holds_is_taken_once_free(bed):
    bed.settings(url=bed.site.url + "keys", autoStartKiosk=True)
    bed.start()
    bed.display.focus_setup()
    other = Display(bed.display.environment["DISPLAY"])
    assert is_free(other, and_taken=True)
    bed.wait_sealed()
    wait_for("report", lambda: NO_TAP in bed.log)
    other.ungrab_keyboard(X.CurrentTime)
    wait_for("lock", lambda: not is_free(other))

    press_all(bed)
    assert not bed.display.fired()
    bed.unseal()
    press_each(bed.display)
    assert [bed.log.count(line) for line in (NO_TAP, "keyboard lock missing", "keyboard lock back")] == [1, 0, 1], bed.log
    bed.close()


def press_all(bed, is_page_listening=True):
    for keys in BINDINGS:
        bed.display.press(keys)
    if is_page_listening:
        bed.seen_keys()


def is_free(client, and_taken=False):
    """Whether a client can take the keyboard, which it may then keep."""
    mode = X.GrabModeAsync
    taken = client.screen().root.grab_keyboard(False, mode, mode, X.CurrentTime) == X.GrabSuccess
    if taken and not and_taken:
        client.ungrab_keyboard(X.CurrentTime)
        client.sync()
    return taken
