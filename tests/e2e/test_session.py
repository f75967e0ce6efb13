"""The dedicated sessions as they are installed: the sealed page and nothing else, from the log-in to the quit."""

import signal
from pathlib import Path

import pytest
from rig.home import as_ordinary_user
from rig.installed import install
from rig.revival import is_keyboard_held, next_life
from rig.waiting import wait_for

# What a session consists of; the engine's processes are in boxes of their own, and a toolkit asks for screen readers' bus.
PARTS = {"quillox", "cage", "Xwayland", "dbus-run-session", "dbus-daemon", "bwrap", "xdg-dbus-proxy",
         "WebKitWebProcess", "WebKitNetworkProcess", "at-spi-bus-launcher", "at-spi2-registryd"}


def begin_session(bed, kind):
    """As a display manager does, for an ordinary user and without a bus; it starts the program by itself."""
    session = install(bed) / "lib/quillox/session"
    environment = {**bed.display.environment, "DBUS_SESSION_BUS_ADDRESS": None, "GDK_BACKEND": None}
    process = bed.home.start(*as_ordinary_user(bed.home.folder), session, kind, log="quillox", environment=environment)
    next_life(bed)
    bed.display.started()
    return process


def programs(bed, before):
    """What runs in the session, by the names of its files."""
    return {Path(f"/proc/{pid}/exe").readlink().name.removesuffix(" (deleted)") for pid in bed.home.processes()
            if pid not in before}


def seal_crash_and_end(bed, kind, quit_program):
    before, empty = set(bed.home.processes()), bed.picture()
    session = begin_session(bed, kind)
    bed.wait_sealed()
    running = programs(bed, before)
    assert "quillox" in running and running <= PARTS, running

    bed.process.end(signal.SIGSEGV)
    next_life(bed)
    bed.wait_sealed()
    quit_program()
    assert session.wait(timeout=30) == 0, bed.log
    wait_for("end of everything", lambda: set(bed.home.processes()) <= before and bed.picture() == empty)


@pytest.mark.on("no window manager")
def test_x11_session(bed):
    def quit_program():
        assert is_keyboard_held(bed.display.environment["DISPLAY"])
        bed.unseal()
        bed.display.close_setup()
    seal_crash_and_end(bed, "x11", quit_program)


@pytest.mark.on("cage")
def test_wayland_session(bed):
    seal_crash_and_end(bed, "wayland", lambda: bed.process.end(signal.SIGTERM))
