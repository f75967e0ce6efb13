"""A client that wants to be seen above everything and to have the keyboard; also run as a program of its own."""

import os
import sys
import time

from Xlib import X, Xatom
from Xlib.display import Display
from Xlib.protocol.event import ClientMessage

KINDS = ("override-redirect", "raises itself", "full screen above", "takes the focus")
COLOUR = 0xE000E0
PLACE = (700, 500)  # Where no list of the page lies.
MARK = "ADVERSARY"  # A selection that it owns.
PAUSE = {"raises itself": 0.1, "takes the focus": 0.01}  # seconds
DEADLINE = 30.0  # seconds
BLIND = 0.02  # seconds; a longer gap between two looks says nothing about what was shown meanwhile.


class Adversary:
    def __init__(self, bed, kind):
        self._display = Display(bed.display.environment["DISPLAY"])
        self._process = bed.home.start("/usr/bin/python3", __file__, kind, environment=bed.display.environment)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.wait()
        self._display.close()

    def is_on_top(self):
        pixel = self._display.screen().root.get_image(*PLACE, 1, 1, X.ZPixmap, 0xFFFFFF).data
        return int.from_bytes(pixel[:3], "little") == COLOUR

    def has_begun(self):
        return self._display.get_selection_owner(self._display.intern_atom(MARK)) != X.NONE

    def longest_on_top(self, duration=1.0):
        """For how long it was seen without a break, in seconds, until `duration` after it has begun."""
        longest, start, last, end = 0, None, 0, None
        latest = time.monotonic() + DEADLINE
        while (now := time.monotonic()) < (end or latest):
            seen = self.is_on_top()
            if not seen or now - last > BLIND:
                start = None
            if seen:
                start = start or now
                longest = max(longest, now - start)
            last = now
            if not end and self.has_begun():
                end = now + duration
        assert end, "no adversary"
        return longest


def main(kind):
    display = Display()
    screen = display.screen()
    root, atom = screen.root, display.intern_atom
    is_managed = kind == "full screen above"
    window = root.create_window(0, 0, screen.width_in_pixels, screen.height_in_pixels, 0, X.CopyFromParent,
                                background_pixel=COLOUR, override_redirect=not is_managed)
    states = [atom("_NET_WM_STATE_FULLSCREEN"), atom("_NET_WM_STATE_ABOVE")]
    window.change_property(atom("_NET_WM_STATE"), Xatom.ATOM, 32, states)
    window.map()
    if is_managed:
        root.send_event(ClientMessage(window=window, client_type=atom("_NET_WM_STATE"), data=(32, [1, *states, 1, 0])),
                        event_mask=X.SubstructureRedirectMask | X.SubstructureNotifyMask)
    window.set_selection_owner(atom(MARK), X.CurrentTime)
    display.sync()
    parent = os.getppid()
    while os.getppid() == parent:
        if kind == "raises itself":
            window.configure(stack_mode=X.Above)
        if kind == "takes the focus":
            window.set_input_focus(X.RevertToParent, X.CurrentTime)
        display.sync()
        time.sleep(PAUSE.get(kind, 1))


if __name__ == "__main__":
    main(sys.argv[1])
