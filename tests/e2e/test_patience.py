"""Servers that take their time: how long the kiosk waits, and how often it asks."""

import time

import pytest
from rig.unreliable import kiosks, shows_notice
from rig.waiting import wait_for

TIMEOUT = 60.0  # seconds without an answer, or without more of it
INTERVAL = 5.0  # seconds between two tries
TRIES = 5
SLOWEST_RETURN = 30.0  # seconds; two tries that are cut off, and one that is not


@pytest.mark.x11
def test_waits_a_minute_for_an_answer_and_asks_every_five_seconds():
    with kiosks(("silent", "page", "unavailable")) as ((first, silent), (second, stalling), (third, busy)):
        second.wait_sealed()
        stalling.act("stalled body")

        wait_for("notice after an answer that is none", lambda: shows_notice(third))
        wait_for("tries", lambda: len(busy.asked) > TRIES)
        asked = busy.asked[:]
        assert all(abs(after - before - INTERVAL) < 1 for before, after in zip(asked, asked[1:])), asked
        busy.act("slow")
        wait_for("page of a slow server", third.is_sealed, deadline=SLOWEST_RETURN)

        for bed, server in (first, silent), (second, stalling):
            wait_for("end of patience", lambda: shows_notice(bed), deadline=TIMEOUT + 15)
            assert abs(time.monotonic() - server.asked[-1] - TIMEOUT) < 5
            server.act("page")
        for bed in first, second:
            wait_for("page", bed.is_sealed)
