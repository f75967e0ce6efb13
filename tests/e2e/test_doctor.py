"""The lock report: what it says of each display, and by which exit code."""

import json
import shutil
import subprocess

import pytest
from Xlib import X
from Xlib.display import Display

GAPS, NO_LOCK = 3, 4


def report(bed):
    """The exit code, the document, and the state of each subject in it."""
    # cage runs it as an ordinary user, who may not enter the folder that it was built in.
    binary = shutil.copy2(bed.binary, bed.home.folder / "doctor")
    doctor = bed.home.start(*bed.display.launcher, binary, "doctor", "--json", log="doctor",
                            environment=bed.display.environment, stdout=subprocess.PIPE)
    document = json.loads(doctor.communicate(timeout=30)[0])
    if not bed.display.launcher:
        assert doctor.returncode == document["exitCode"]
    return document["exitCode"], document, {each["subject"]: each["state"] for each in document["findings"]}


@pytest.mark.on("openbox")
def test_names_the_gaps_of_a_desktop_who_is_in_the_way_and_the_sealed_kiosk(bed):
    code, document, states = report(bed)
    assert code == GAPS and document["display"]["kind"] == "x11"
    assert {subject for subject, state in states.items() if state == "gap"} >= {"input", "desktop", "clients", "access"}
    assert states["keyboard"] == states["terminals"] == states["displaySleep"] == "closed"
    assert "openbox (process " in next(each["explanation"] for each in document["findings"] if each["subject"] == "clients")

    other = Display(bed.display.environment["DISPLAY"])
    other.screen().root.grab_keyboard(False, X.GrabModeAsync, X.GrabModeAsync, X.CurrentTime)
    other.sync()
    code, _, states = report(bed)
    assert code == NO_LOCK and states["keyboard"] == "blocking"
    other.ungrab_keyboard(X.CurrentTime)
    other.grab_server()
    other.sync()
    code, document, _ = report(bed)
    assert code == NO_LOCK and document["display"]["kind"] == "notAnswering"
    other.close()

    bed.start()
    bed.wait_sealed()
    code, document, states = report(bed)
    assert code == GAPS and states["keyboard"] == states["terminals"] == "closed"
    assert document["kiosk"] == {"process": bed.process.pid, "isSealed": True}
    bed.unseal()
    assert report(bed)[1]["kiosk"] == {"process": bed.process.pid, "isSealed": False}


@pytest.mark.on("sway")
def test_finds_the_bindings_that_pass_sways_inhibitor(bed):
    code, document, states = report(bed)
    assert code == GAPS and document["display"]["server"] == "sway"
    assert states["keyboard"] == states["bindings"] == "closed" and states["desktop"] == "gap"

    configuration = bed.home.folder / "compositor" / "config"
    leaks = ["bindsym --inhibited Mod4+i exec true", "bindgesture swipe:left workspace next"]
    (configuration.parent / "more").write_text(f"set $loud --inhibited\nbindsym Mod4+l exec true\n{leaks[1]}\n")
    configuration.write_text(configuration.read_text() + "include more\nbindsym {\n  $loud Mod4+i exec true\n}\n")
    bed.display.run("swaymsg", "reload")
    _, document, states = report(bed)
    assert states["bindings"] == "gap"
    change = next(each["change"] for each in document["findings"] if each["subject"] == "bindings")
    assert set(change.splitlines()) == set(leaks)


@pytest.mark.on("cage")
def test_cage_has_no_bindings_and_no_desktop(bed):
    code, document, states = report(bed)
    assert code == GAPS and document["display"]["server"] == "cage"
    assert {states[each] for each in ("keyboard", "bindings", "desktop", "displaySleep")} == {"closed"}
    assert states["input"] == "gap"  # Here it is a window of an X server.
