"""An X server with a touch screen, and the fingers on it."""

import contextlib
import socket
import struct
from pathlib import Path

import pytest

from . import x11
from .waiting import wait_for

DRIVER = Path("/usr/lib/xorg/modules/input/inputtest_drv.so")
CONFIGURATION = x11.DUMMY_CONFIGURATION + """
Section "InputDevice"
  Identifier "touch screen"
  Driver "inputtest"
  Option "SocketPath" "{path}"
  Option "DeviceType" "Touch"
  Option "TouchCount" "2"
EndSection
Section "ServerLayout"
  Identifier "layout"
  Screen "screen"
  InputDevice "touch screen"
EndSection
"""
VERSION, WAIT, TOUCH = 0, 1, 6  # kinds of message
BEGIN, UPDATE, END = range(3)
FIRST_TOUCH = 18  # what the server calls the beginning of a touch
RANGE = 0xFFFF  # of a touch screen's axes
VALUATORS = 64


def touch_screen(home):
    if not DRIVER.exists() or not x11.DUMMY_DRIVER.exists():
        pytest.skip("needs the X server's dummy and test drivers: see packaging/packages/test.txt")
    path, configuration = home.folder / "touch.socket", home.folder / "xorg.conf"
    configuration.write_text(CONFIGURATION.format(path=path))
    server = x11.X11(home, ("Xorg", "-config", configuration, "-novtswitch", "-sharevts", "-logfile",
                            home.logs / "Xorg.log"), ("openbox",))
    server.plug("DUMMY0", "1024x768", "0x0", "--primary")
    server.fingers = Fingers(path)
    return server


class Fingers:
    """The driver's test interface; every call waits until the server has dealt with it."""

    def __init__(self, path):
        self._socket = socket.socket(socket.AF_UNIX)
        self._socket.settimeout(30)
        wait_for(f"device {path}", lambda: self._socket.connect_ex(str(path)) == 0)
        self._ask(VERSION, struct.pack("=HH", 1, 1), 12)

    @contextlib.contextmanager
    def hold(self):
        """Holds one finger on the middle of the screen."""
        self._touch(1, BEGIN, 0.5, 0.5)
        yield
        self._touch(1, END, 0.5, 0.5)

    def spread(self):
        """Moves two fingers apart, from the middle of the screen."""
        for phase, steps in (BEGIN, [0]), (UPDATE, range(20)), (END, [20]):
            for step in steps:
                for finger, side in (1, -1), (2, 1):
                    self._touch(finger, phase, 0.5 + side * (0.05 + step / 100), 0.5)

    def _touch(self, finger, phase, x, y):
        """`x` and `y` are parts of the screen's size."""
        values = [x * RANGE, y * RANGE] + [0.0] * (2 * VALUATORS - 2)
        data = struct.pack(f"=III8s4x{2 * VALUATORS}d", finger, FIRST_TOUCH + phase, 0, b"\3", *values)
        self._send(TOUCH, data)
        self._ask(WAIT, b"", 8)

    def _send(self, kind, data):
        self._socket.sendall(struct.pack("=II", 8 + len(data), kind) + data)

    def _ask(self, kind, data, length):
        self._send(kind, data)
        answer = b""
        while len(answer) < length:
            part = self._socket.recv(length - len(answer))
            assert part, "the server hung up"
            answer += part
