"""How much the display is used is counted, and in the file in time."""

import contextlib
import itertools
import json
import time

import pytest
from rig.waiting import wait_for
from Xlib import X

GAP = 5  # seconds that part two sessions
DISK = 20 + 3  # seconds until what was counted is in the file, and some for a machine that is busy
REFERENCE = 978_307_200  # The file counts from 2001.
ZONE = "Asia/Kathmandu", 5.75 * 3600  # seconds ahead of UTC
places = itertools.cycle(range(300, 400))


def move(display):
    display.fake([(X.MotionNotify, 0, next(places), 300)])


def button(number):
    return lambda display: display.fake([(X.ButtonPress, number), (X.ButtonRelease, number)])


ACTS = {"motion": move, "key": lambda display: display.press("a"), "modifier": lambda display: display.press("shift"),
        "left": button(1), "middle": button(2), "right": button(3), "wheel": button(5)}


def stored(bed):
    """The file's one record and its time of last use, None before there is any."""
    with contextlib.suppress(FileNotFoundError):
        document = json.loads((bed.home.folder / "data_home/Quillox/usage.json").read_text())
        entry, = document["days"]
        assert entry["source"] == "127.0.0.1" and sum(entry["hours"]) == entry["sessions"], entry
        return entry, document["lastUsed"] + REFERENCE


def local_hour(moment):
    moment = time.gmtime(moment + ZONE[1])
    return time.strftime("%Y-%m-%d", moment), moment.tm_hour


@pytest.mark.on("openbox")
def test_visits_are_counted(bed):
    bed.settings(url=bed.site.url, autoStartKiosk=True, idleResetSeconds=GAP)
    bed.start(environment={"TZ": ZONE[0]})
    bed.wait_sealed()
    begin = time.time()
    turns = itertools.cycle(ACTS.values())
    wait_for("end of the visit", lambda: next(turns)(bed.display) or time.time() > begin + 4)
    end = time.time()

    def first_visit():
        entry, last_used = stored(bed) or (None, 0)
        return abs(last_used - end) < 0.5 and entry
    entry = wait_for("the visit in the file", first_visit, deadline=DISK)
    assert entry["sessions"] == 1 and 3 <= entry["activeSeconds"] <= 5 + end - begin
    assert any(entry["date"] == day and entry["hours"][hour] for day, hour in (local_hour(begin), local_hour(end)))

    for act in ACTS.values():
        wait_for("a pause longer than the gap", lambda: time.time() > end + GAP + 0.3)
        act(bed.display)
        end = time.time()
    bed.unseal()
    seen = wait_for("the whole run in the file", lambda: stored(bed)[0]["sessions"] > len(ACTS) and stored(bed), deadline=3)
    # The keys that unseal are held for a second and belong to the last visit.
    assert seen[0]["sessions"] == 1 + len(ACTS) and end <= seen[1] <= time.time()
    assert seen[0]["activeSeconds"] <= entry["activeSeconds"] + time.time() - end
