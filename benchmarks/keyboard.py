"""Keys and windows of the stage's X screen, by a connection of its own."""

import contextlib
import time
from collections.abc import Iterator

from Xlib import XK, X, error
from Xlib.display import Display
from Xlib.ext import xtest
from Xlib.protocol.event import ClientMessage


class Keyboard:
    """Keys that the X server takes for pressed by hand."""

    def __init__(self, display: Display):
        self.display = display

    def fake(self, kind: int, key: str) -> float:
        """The moment just before the event is handed to the server, on the monotonic clock."""
        code = self.display.keysym_to_keycode(XK.string_to_keysym(key))
        xtest.fake_input(self.display, kind, code)
        moment = time.monotonic()
        self.display.flush()
        return moment

    @contextlib.contextmanager
    def hold(self, *keys: str) -> Iterator[float]:
        """Gives the moment at which the last key went down."""
        moment = 0.0
        try:
            for key in keys:
                moment = self.fake(X.KeyPress, key)
            yield moment
        finally:
            for key in reversed(keys):
                self.fake(X.KeyRelease, key)
            self.display.sync()


def activate_window(display: Display, title: str) -> bool:
    """Asks the window manager for the window; whether there is one that shows."""
    root = display.screen().root
    pending = list(root.query_tree().children)
    while pending:
        window = pending.pop()
        try:
            is_visible = window.get_attributes().map_state == X.IsViewable
            if is_visible and window.get_wm_name() == title:
                data = (32, [2, X.CurrentTime, 0, 0, 0])
                kind = display.intern_atom("_NET_ACTIVE_WINDOW")
                root.send_event(ClientMessage(window=window, client_type=kind, data=data),
                                X.SubstructureRedirectMask | X.SubstructureNotifyMask)
                display.sync()
                return True
            pending += window.query_tree().children
        except error.XError:
            continue
    return False


def full_screen_windows(display: Display, width: int, height: int) -> set[int]:
    """The windows that cover the screen and that no window manager knows."""
    found = set()
    for window in display.screen().root.query_tree().children:
        with contextlib.suppress(error.XError):
            attributes, place = window.get_attributes(), window.get_geometry()
            if (attributes.map_state == X.IsViewable and attributes.override_redirect
                    and (place.width, place.height) == (width, height)):
                found.add(window.id)
    return found
