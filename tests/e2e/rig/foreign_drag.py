"""Another client of the X server that drags a file over a window."""

from Xlib import X
from Xlib.display import Display
from Xlib.protocol.event import ClientMessage, SelectionNotify

from .waiting import wait_for

FILE_LIST = "text/uri-list"
VERSION = 5  # of the protocol


class ForeignDrag:
    def __init__(self, server, address):
        self._display = Display(server.environment["DISPLAY"])
        self._address = address
        root = self._display.screen().root
        self._window = root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        self._window.set_selection_owner(self._atom("XdndSelection"), X.CurrentTime)
        self._target = next(found for window in reversed(root.query_tree().children) if (found := self._taker(window)))

    def _atom(self, name):
        return self._display.intern_atom(name)

    def _taker(self, window):
        """The full-screen window itself, or the one in its frame, that says it takes drops."""
        is_full = window.get_geometry().width == self._display.screen().width_in_pixels
        if window.get_attributes().map_state != X.IsViewable or not is_full:
            return None
        if window.get_full_property(self._atom("XdndAware"), X.AnyPropertyType):
            return window
        return next((found for child in window.query_tree().children if (found := self._taker(child))), None)

    def _send(self, kind, *data):
        message = ClientMessage(window=self._target, client_type=self._atom(kind),
                                data=(32, [self._window.id, *data, *[0] * (4 - len(data))]))
        self._target.send_event(message)
        self._display.flush()

    def enter(self):
        self._send("XdndEnter", VERSION << 24, self._atom(FILE_LIST))

    def move(self, x, y):
        """Whether the window would take what is dropped there now; it may have to see more of it first."""
        self._send("XdndPosition", 0, x << 16 | y, X.CurrentTime, self._atom("XdndActionCopy"))
        return wait_for("answer to a drag", self._status)[0]

    def drop(self):
        self._send("XdndDrop", 0, X.CurrentTime)

    def _status(self):
        """Answers requests for the data on the way; a list with the answer to the position, once it is there."""
        while self._display.pending_events():
            event = self._display.next_event()
            if event.type == X.SelectionRequest:
                self._hand_over(event)
            elif event.type == X.ClientMessage and event.client_type == self._atom("XdndStatus"):
                return [bool(event.data[1][1] & 1)]
        return None

    def _hand_over(self, request):
        request.requestor.change_property(request.property, self._atom(FILE_LIST), 8, f"{self._address}\r\n".encode())
        request.requestor.send_event(SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=request.property))
        self._display.flush()
