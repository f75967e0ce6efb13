"""The processes of the page die, hang or grow; the page comes back, and nobody sees anything else meanwhile."""

import os
import signal
import time

import pytest
from rig import site
from rig.processes import descendants, status
from rig.waiting import wait_for

NOTICE = (235, 235, 235)
# A page that has lived for ten seconds counts as a good one.
FRAIL = site.PAGE + b"<script src=/fault></script><script>onload = () => setTimeout(() => fetch('/lives'), 10500)</script>"
HANG = b"setTimeout(() => { fetch('/hangs'); const end = Date.now() + 100; while (Date.now() < end); while (true); }, %d)"
GROW = b"const all = []; setInterval(() => all.push(new Uint8Array(3e7).fill(all.length)), 20)"
NOTICED_WITHIN = 10  # seconds from the beginning of a hang
SLACK = 5  # for a machine that is busy with other tests


@pytest.fixture
def frail(bed, monkeypatch):
    """A sealed page whose fault the test chooses."""
    monkeypatch.setitem(site.PAGES, "/frail", FRAIL)
    monkeypatch.setitem(site.PAGES, "/fault", b"")
    bed.settings(url=bed.site.url + "frail", autoStartKiosk=True)
    bed.start(environment={"QUILLOX_PAGE_MEMORY": "400"})
    bed.wait_sealed()
    return bed


def processes(bed, name):
    return [pid for pid, present in descendants(bed.process.pid).items() if present == name]


def kill_page(bed):
    for pid in processes(bed, "WebKitWebProces"):
        os.kill(pid, signal.SIGKILL)


def wait_back(bed, loads):
    """Until the page, which was asked for so often, was asked for again and shows; nothing else may show but the notice."""
    def is_back():
        picture = bed.picture()
        edge, inside = picture.getpixel((1, 1)), picture.getpixel((picture.width // 3, picture.height // 3))
        assert inside in (NOTICE, (0xe8, 0xe0, 0xd8)), f"{edge} {inside} shows"
        return bed.site.paths.count("/frail") > loads and bed.is_sealed()
    wait_for("page again", is_back)
    assert bed.process.poll() is None


def incidents(bed, what):
    return sum(what in line for line in bed.log.splitlines() if line.startswith("Quillox: "))


@pytest.mark.on("openbox")
def test_killed_again_and_again(frail):
    memory = []
    for kills in range(3):
        wait_for("page that lives", lambda: frail.site.paths.count("/lives") > kills)
        loads = frail.site.paths.count("/frail")
        kill_page(frail)
        wait_back(frail, loads)
        memory.append(status(frail.process.pid, "VmRSS"))
    assert memory[-1] - memory[0] < 20_000, memory
    assert incidents(frail, "crashed") == 3

    # As soon as it is asked for, for some seconds; each try comes later than the one before.
    for _ in range(4):
        loads = frail.site.paths.count("/frail")
        kill_page(frail)
        wait_for("another try", lambda: frail.site.paths.count("/frail") > loads)
    wait_back(frail, loads)

    loads = frail.site.paths.count("/frail")
    for pid in processes(frail, "WebKitNetworkPr"):
        os.kill(pid, signal.SIGKILL)
    wait_back(frail, loads)
    assert incidents(frail, "network process died") == 1
    frail.unseal()
    frail.close()


@pytest.mark.on("openbox")
@pytest.mark.parametrize("is_touched, milliseconds", [(False, 9000), (True, 100)])  # After the first signs of life, and before.
def test_hangs(frail, is_touched, milliseconds):
    site.PAGES["/fault"] = HANG % milliseconds
    frail.site.paths.clear()
    kill_page(frail)
    wait_for("page that hangs", lambda: "/hangs" in frail.site.paths)
    begin = time.monotonic()
    if is_touched:
        frail.display.click(400, 300)
        frail.display.press("a")
    site.PAGES["/fault"] = b""
    wait_for("end of the hang", lambda: incidents(frail, "did not answer"))
    assert time.monotonic() - begin < NOTICED_WITHIN + SLACK
    wait_back(frail, 1)


@pytest.mark.on("openbox")
def test_grows_without_end(frail):
    site.PAGES["/fault"] = GROW
    frail.site.paths.clear()
    kill_page(frail)
    wait_for("page that grows", lambda: "/fault" in frail.site.paths)
    site.PAGES["/fault"] = b""
    wait_for("its end", lambda: incidents(frail, "too much memory"))
    wait_back(frail, 1)
