"""A lost connection: the notice comes whatever the network does, and the page comes back by itself."""

import time

import pytest
from rig.bed import Bed
from rig.site import PAGE
from rig.unreliable import Cable, UnreliableServer, kiosks, shows_notice
from rig.waiting import wait_for

# One column for each kiosk. In the first row the server is like that from the start.
FAULTS = (
    ("refused", "captive portal", "unavailable", "garbage"),
    ("reset in the body", "refused", "short body", "unknown host"),
    ("unavailable", "bad certificate", "garbage", "refused"),
)
BACK = 7.0  # seconds until the page shows again: a retry, and the time to load it
NOTICED, RESTORED = 2.0, 5.0  # seconds after a cable was pulled, and after it was plugged in again
FLAPS = 100


@pytest.mark.x11
def test_covers_whatever_goes_wrong_until_the_page_is_back():
    with kiosks(FAULTS[0]) as pairs:
        for faults in FAULTS:
            for (bed, server), fault in zip(pairs, faults):
                server.act(fault)
            for (bed, server), fault in zip(pairs, faults):
                wait_for(f"notice after: {fault}", lambda: shows_notice(bed))
                server.act("page")
            begin = time.monotonic()
            for (bed, _), fault in zip(pairs, faults):
                wait_for(f"page after: {fault}", bed.is_sealed, deadline=begin + BACK - time.monotonic())


@pytest.mark.on("no window manager")
def test_covers_an_address_that_the_engine_refuses(bed):
    bed.settings(url="http://127.0.0.1:25/")
    bed.start()
    bed.hold_to_seal()
    wait_for("notice", lambda: shows_notice(bed))


@pytest.mark.on("no window manager")
def test_follows_the_cable(bed):
    cable = Cable(bed.home)
    server = UnreliableServer(bed.home, host=cable.SERVER, network=cable.server)
    local = Bed("no window manager")
    try:
        folder = local.home.subfolder("site")
        (folder / "index.html").write_bytes(PAGE)
        local.settings(sourceKind="local", localPath=str(folder), autoStartKiosk=True)
        bed.settings(url=server.url, autoStartKiosk=True)
        for each in (bed, local):
            cable.join(each)
            each.start()
        for each in (bed, local):
            each.wait_sealed()

        begin = time.monotonic()
        cable.pull()
        wait_for("notice", lambda: shows_notice(bed), deadline=NOTICED)
        noticed = time.monotonic()
        assert local.is_sealed()
        cable.plug_in()
        plugged = time.monotonic()
        wait_for("page", bed.is_sealed, deadline=RESTORED)
        print(f"notice after {noticed - begin:.2f} s, page after {time.monotonic() - plugged:.2f} s")

        count = len(server.asked)
        cable.flap(FLAPS)
        flapped = len(server.asked)
        wait_for("page that lives", lambda: len(server.asked) > flapped + 1 and bed.is_sealed())
        print(f"{FLAPS} flaps: {flapped - count} requests, then {len(server.asked) - flapped}")
        assert len(server.asked) - count < FLAPS / 4
        assert local.is_sealed()
    finally:
        server.end()
        local.end()
