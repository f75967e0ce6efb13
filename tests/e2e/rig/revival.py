"""The lives of a program that somebody else starts, and starts again."""

import os
import signal
from contextlib import suppress
from pathlib import Path

from Xlib import X
from Xlib.display import Display

from .processes import status
from .waiting import wait_for


class Life:
    """One life of the program, in the place of a process that the test has started."""

    def __init__(self, pid):
        self.pid = pid

    def poll(self):
        return None if is_alive(self.pid) else 0

    def end(self, number):
        os.kill(self.pid, number)
        if number == signal.SIGSEGV:
            wait_for("crash", self._crashes)

    def _crashes(self):
        """The engine handles the signal once; a real fault is there again afterwards, one that was sent is not."""
        with suppress(ProcessLookupError):
            os.kill(self.pid, signal.SIGSEGV)
        return not is_alive(self.pid)


def is_alive(pid):
    with suppress(OSError):
        return ") Z " not in Path(f"/proc/{pid}/stat").read_text()
    return False


def lives(home):
    """The processes of this home that are the program itself, and none that keeps it alive or watches it."""
    parents = {}
    for pid in home.processes():
        with suppress(OSError):
            command = Path(f"/proc/{pid}/cmdline").read_bytes()
            if Path(command.decode().partition("\0")[0]).name == "quillox" and command.count(b"\0") == 1:
                parents[pid] = status(pid, "PPid")
    return [pid for pid in parents if pid not in parents.values()]


def next_life(bed):
    """The life that follows the bed's last one, which becomes the bed's."""
    last = bed.process and bed.process.pid
    pid, = wait_for("next life", lambda: [pid for pid in lives(bed.home) if pid != last])
    bed.process = Life(pid)
    return bed.process


def wait_sealed_again(bed):
    """Until the life that follows the last one shows the page and has the keyboard."""
    next_life(bed)
    bed.wait_sealed()
    wait_for("held keyboard", lambda: is_keyboard_held(bed.display.environment["DISPLAY"]))


def is_keyboard_held(display):
    """Whether nobody else can take the keyboard of an X server."""
    client = Display(display)
    mode = X.GrabModeAsync
    answer = client.screen().root.grab_keyboard(False, mode, mode, X.CurrentTime)
    client.close()  # Which lets go of it.
    return answer == X.AlreadyGrabbed
