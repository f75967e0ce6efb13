"""The panel that chooses a website on this machine, by keys alone."""

import json

import pytest
from rig.a11y import Screen
from rig.waiting import wait_for

ACCEPT, TO_PATH = ("Tab", "Tab", "Return"), ("shift+Tab", "shift+Tab", "ctrl+a")
CHOICES = [  # a key for the list, more keys, typed text, more keys; the folder and page that are stored then
    (None, (), "", ACCEPT, "", "index.html"),
    ("Home", (), "", ACCEPT, "a site", "index.html"),
    ("End", ("Return",), "", (), "", "zebra.html"),
    ("Home", ("Return",), "", ACCEPT, "a site", "index.html"),
    ("End", (), "", ("Escape",), None, "index.html"),
    (None, TO_PATH, "~/a site/start.html", ("Return",), "a site", "start.html"),
    (None, TO_PATH, "missing", ("Return", "Escape"), None, "index.html"),
    (None, TO_PATH, "notes.txt", ("Return", "Escape"), None, "index.html"),
    (None, TO_PATH, "a site", ("Return", *ACCEPT), "a site", "index.html"),
]


@pytest.mark.on("openbox")
def test_choices(bed):
    (bed.home.folder / "a site" / "inner").mkdir(parents=True)
    for name in ("zebra.html", "zz.txt", "notes.txt", ".zz.html", "a site/start.html"):
        (bed.home.folder / name).write_text("<!doctype html>" if name.endswith("html") else "text")
    bed.settings(sourceKind="remote")
    screen = Screen(bed)
    bed.start()
    for row, keys, text, more_keys, folder, page in CHOICES:
        bed.display.focus_setup()
        screen.press("Choose a folder or an HTML file")
        bed.display.focus_open_panel()
        if row:
            select_row(bed.display, row)
        press_all(bed.display, keys)
        bed.display.enter(text)
        press_all(bed.display, more_keys)
        wait_for("end of the panel", lambda: not bed.display.open_panel())
        chosen = "" if folder is None else str(bed.home.folder / folder), page
        wait_for(f"choice of {chosen}", lambda: stored_choice(bed) == chosen)
        if folder is not None:
            bed.display.focus_setup()
            screen.press("Use a website address instead")
    assert "CRITICAL" not in bed.log, bed.log
    bed.close()


def select_row(display, key):
    """Presses a key until a row shows that it is selected; before that, the list was still empty."""
    before = display.picture("screen")

    def is_selected():
        display.press(key)
        return display.picture("screen") != before
    wait_for("selected row", is_selected)


def press_all(display, keys):
    for key in keys:
        display.press(key)


def stored_choice(bed):
    settings = json.loads(bed.defaults.read_text())["kioskSettings"]
    return settings.get("localPath"), settings.get("localEntry")
