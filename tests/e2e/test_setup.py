"""The operator's screens: worked with keys alone, and read as a screen reader reads them."""

import contextlib
import json
import time

import pytest
from rig.a11y import Screen
from rig.bed import GESTURE
from rig.site import PAGE, page_picture
from rig.waiting import wait_for

PASSWORD = "open sesame"
# The window's own buttons, which its manager has keys for, and the further ones of groups, which the arrow keys reach.
BESIDE_TAB = {"Minimize", "Maximize", "Close", "Top left", "Top center", "Top right", "Bottom left", "Bottom right",
              "WEBSITE COLOR"}
CHOSEN = {
    "restrictToDomain": False, "restrictToPath": True, "allowedDomains": ["pay.example.org"], "scrollOnly": True,
    "idleResetSeconds": 60, "exitPassword": PASSWORD, "requireExitPassword": True, "keepAlive": True,
    "autoStartKiosk": True, "showBack": True, "showForward": False, "showRefresh": False, "showHome": True,
    "navPosition": "topRight", "avoidNotch": True, "notchBarColor": "pageBackground", "sourceKind": "local",
    "localEntry": "start.html", "autoUpdate": False}
COUNTDOWN = 5  # seconds
RELEASE_CHECKS = 10  # seconds until a gesture that is held on seals all the same


@pytest.fixture
def screen(bed):
    return Screen(bed)


def stored(bed):
    return json.loads(bed.defaults.read_text()) if bed.defaults.exists() else {}


@pytest.mark.on("openbox", "sway")
def test_new_operator_sets_everything_up_and_seals(bed, screen):
    site = bed.home.subfolder("exhibit")
    (site / "start.html").write_bytes(PAGE)
    bed.defaults.unlink()
    bed.start()
    go_through_guide(bed, screen)
    assert stored(bed)["hasOnboarded"]
    number, label = bed.run("displays").splitlines()[0].split("\t")[:2]
    choose_everything(bed, screen, site, label)
    expected = {**CHOSEN, "url": bed.site.url + "exhibits/", "displayID": int(number), "localPath": str(site)}
    with contextlib.suppress(AssertionError):
        wait_for("choices on the disk", lambda: stored(bed)["kioskSettings"] == expected, deadline=5)
    assert stored(bed)["kioskSettings"] == expected
    assert list(bed.home.folder.glob("config_home/autostart/*"))

    with bed.display.hold(GESTURE):
        screen.wait("SEAL WEBSITE")
    wait_for("field with the keyboard", lambda: (now := screen.focused()) and now.role == "text box")
    for text in "wrong", PASSWORD:
        bed.display.press("ctrl+a")
        bed.display.enter(text)
        bed.display.press("Return")
    wait_for("sealed page", lambda: shows_page(bed))
    bed.open_prompt()
    bed.display.enter(PASSWORD)
    bed.display.press("Return")
    bed.wait_unsealed()
    screen.wait("LOCK TO DOMAIN")
    assert stored(bed)["kioskSettings"] == expected
    bed.close()


def go_through_guide(bed, screen):
    screen.wait("QUILLOX", "Step 1 of 4")
    screen.press("CONTINUE")
    screen.wait("Step 2 of 4", "GRANTED")
    screen.press("CONTINUE")
    screen.wait("Step 3 of 4")
    bed.hold(0.5)
    screen.wait("TRY IT NOW - HOLD")
    with bed.display.hold(GESTURE):
        screen.wait("✓ SEALED - YOU'VE GOT IT")
    assert bed.site.requests == 0
    screen.press("CONTINUE")
    screen.wait("Step 4 of 4")
    assert "sensitive" not in screen.control("FINISH SETUP").states
    screen.enter("Website address", bed.site.url + "exhibits/")
    screen.press("BACK")
    screen.wait("Step 3 of 4")
    screen.press("CONTINUE")
    screen.wait("Step 4 of 4")
    screen.press("FINISH SETUP")
    screen.wait("UNSEALING...")
    screen.wait("LOCK TO DOMAIN")


def choose_everything(bed, screen, site, display):
    press = bed.display.press
    screen.press("Choose a folder or an HTML file")
    screen.enter("Path of a folder or file", str(site / "start.html"))
    press("Return")
    screen.wait("exhibit / start.html")
    screen.press("LOCK TO DOMAIN", "LOCK TO PATH")
    for text in "HTTPS://Pay.Example.org/x", "b.example.org", "PAY.example.org":
        screen.enter("Domain to allow, too", text)
        press("Return") if text.startswith("b") else screen.press("Add this domain")
    screen.press("Remove b.example.org", "SCROLL ONLY", "BACK", "HOME")
    screen.choose("Top right", "Up", "Right")
    screen.choose_item("PRIMARY (AUTOMATIC)", display)
    screen.press("NOTCH BAR")
    screen.choose("WEBSITE COLOR", "Right")
    screen.press("KEEP ALIVE", "SEAL IT ON LAUNCH")
    screen.choose_item("Off", "1 min")
    screen.press("USAGE")
    screen.wait("NO DATA YET — SEAL A SITE TO START COUNTING")
    press("Escape")
    screen.press("EXIT PASSWORD")
    screen.enter("Exit password", PASSWORD)
    screen.press("AUTOMATIC UPDATES")


def shows_page(bed):
    """In its lower half; over the upper one is the bar of buttons."""
    picture = bed.picture()
    lower = (0, picture.height // 2, *picture.size)
    return picture.crop(lower) == page_picture(picture.size).crop(lower)


@pytest.mark.on("openbox", "sway")
def test_every_control_has_a_name_and_a_place_in_the_order_of_tab(bed, screen):
    bed.settings(url=bed.site.url + "exhibits/", allowedDomains=["a.example.org", "b.example.org"])
    bed.start()
    walk = [screen.tab()]
    while (now := screen.tab()).path != walk[0].path:
        walk.append(now)
    names = [widget.name for widget in walk]
    print(*walk, sep="\n")
    controls = [widget.name for widget in screen.widgets() if widget.role not in ("label", "scroller")
                and {"focusable", "sensitive"} <= widget.states and widget.name not in BESIDE_TAB]
    turn = controls.index(names[0])
    assert controls[turn:] + controls[:turn] == names and all(names)


@pytest.mark.on("openbox")
def test_countdown_is_cancelled_in_three_ways_or_runs_out(bed, screen):
    def is_counting():
        return any(name.startswith("SEALING IN ") for name in screen.names())

    def click_beside():
        x, y, _, height = bed.display.setup_box()
        bed.display.click(x + 9, y + height - 9)
    for cancel in click_beside, lambda: screen.press("CANCEL"), lambda: bed.display.press("Escape"):
        bed.start()
        wait_for("countdown", is_counting)
        end = time.monotonic() + COUNTDOWN + 1
        cancel()
        wait_for("end of the countdown", lambda: not is_counting())
        wait_for("the time when it would have sealed", lambda: time.monotonic() > end)
        assert bed.site.requests == 0 and stored(bed)["kioskSettings"]["autoStartKiosk"]
        bed.close()
        bed.process = None
    bed.start()
    bed.wait_sealed()
    bed.unseal()


@pytest.mark.on("openbox", "sway")
def test_gesture_that_is_held_on_seals_all_the_same(bed):
    bed.settings(url=bed.site.url + "keys")
    bed.start()
    bed.display.focus_setup()
    begin = time.monotonic()
    with bed.display.hold(GESTURE):
        bed.wait_sealed()
        assert RELEASE_CHECKS < time.monotonic() - begin < RELEASE_CHECKS + 5
    keys, text = bed.seen_keys()
    assert "keydown KeyS" not in keys and text == "x"
    bed.unseal()
    bed.close()


@pytest.mark.on("three outputs")
def test_menu_of_displays_follows_the_cables(bed, screen):
    bed.settings(url=bed.site.url)
    bed.choose("DUMMY1")
    before = bed.defaults.read_text()
    chosen = f"DISPLAY {json.loads(before)['kioskSettings']['displayID']}"
    bed.start()
    screen.control(chosen)
    bed.display.unplug("DUMMY1")
    screen.control("PRIMARY (AUTOMATIC)")
    bed.display.plug("DUMMY1", "800x600", "2304x0")
    screen.control(chosen)
    bed.display.focus_setup()
    screen.press(chosen)
    labels = [line.split("\t")[1] for line in bed.run("displays").splitlines()]
    items = [widget.name for widget in screen.widgets() if widget.role == "menu item"]
    assert items[0] == "Primary (automatic)" and sorted(items[1:]) == sorted(labels)
    assert bed.defaults.read_text() == before
