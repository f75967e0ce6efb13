"""A server that misbehaves on command, and a cable that can be pulled."""

import contextlib
import ctypes
import os
import socket
import struct
import threading
import time

import pytest

from .bed import Bed
from .home import needs
from .site import PAGE
from .tls import server_context
from .waiting import wait_for

# The known page, which asks for itself again every second, so that it meets what its server does.
RESTLESS = PAGE + b"<meta http-equiv=refresh content=1>"
SLOW = 7.0  # seconds until a slow server answers; longer than between two tries
NOTICE = (235, 235, 235)
CLONE_NEWNET = 0x40000000


def answer(status, body=b"", *headers):
    head = (f"HTTP/1.1 {status}", "Content-Type: text/html", f"Content-Length: {len(body)}", "Connection: close",
            *headers, "", "")
    return "\r\n".join(head).encode() + body


# The engine takes less than was promised for an error only where the connection was to stay.
HALF = answer("200 OK", 2 * PAGE).replace(b"Connection: close", b"Connection: keep-alive")[:-len(PAGE)]


def redirect(address):
    return answer("302 Found", b"", f"Location: {address}")


@contextlib.contextmanager
def kiosks(behaviours):
    """Pairs of a sealed kiosk and its server, which behaves like that from the start."""
    with contextlib.ExitStack() as stack:
        pairs = []
        for behaviour in behaviours:
            bed = Bed("no window manager")
            stack.callback(bed.end)
            server = UnreliableServer(bed.home, behaviour)
            stack.callback(server.end)
            bed.settings(url=server.url, allowedDomains=["nonexistent.invalid"])
            pairs.append((bed, server))
        for bed, _ in pairs:
            bed.start()
        for bed, _ in pairs:
            bed.hold_to_seal()
        yield pairs


def shows_notice(bed):
    """Whether the screen is light grey all over, but for dark text in the middle."""
    picture = bed.picture()
    width, height = picture.size
    grey = picture.convert("L")
    dark = grey.point(lambda level: 255 if level < 100 else 0).getbbox()
    corners = (0, 0), (width - 1, 0), (0, height - 1), (width - 1, height - 1)
    return (all(picture.getpixel(corner) == NOTICE for corner in corners)
            and grey.histogram()[NOTICE[0]] > 0.95 * width * height
            and dark and width / 4 < dark[0] < width / 2 < dark[2] < 3 * width / 4
            and height / 3 < dark[1] < height / 2 and dark[3] < 2 * height / 3)


class UnreliableServer:
    """Answers as `behaviour` says, which is one of the methods below by its name."""

    def __init__(self, home, behaviour="page", host="127.0.0.1", network=None):
        self.asked = []  # when the page was asked for, on the monotonic clock
        self._host, self._network = host, network
        self._home, self._sockets = home, []
        self._listener, self._port = None, 0
        self._listen()
        self.act(behaviour)

    @property
    def url(self):
        return f"http://{self._host}:{self._port}/"

    def act(self, behaviour):
        self._behave = getattr(self, behaviour.replace(" ", "_"))
        if behaviour == "refused":
            self._close_listener()
        elif not self._listener:
            self._listen()

    def refused(self, connection):
        """Whoever was still let in is turned out."""

    def page(self, connection):
        connection.sendall(answer("200 OK", RESTLESS))

    def slow(self, connection):
        time.sleep(SLOW)
        self.page(connection)

    def silent(self, connection):
        self._sockets.append(connection.dup())  # Kept open.

    def stalled_body(self, connection):
        connection.sendall(HALF)
        self.silent(connection)

    def short_body(self, connection):
        connection.sendall(HALF)

    def reset_in_the_body(self, connection):
        self.short_body(connection)
        connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))

    def garbage(self, connection):
        connection.sendall(b"\0\1\2 what is this?\r\n\r\n")

    def unavailable(self, connection):
        connection.sendall(answer("503 Service Unavailable", b"<h1>Service Unavailable"))

    def captive_portal(self, connection):
        connection.sendall(redirect(f"http://portal.localhost:{self._port}/login"))

    def unknown_host(self, connection):
        connection.sendall(redirect("http://nonexistent.invalid/"))

    def bad_certificate(self, connection):
        """The page moves to a server of its own host that signed its certificate itself."""
        secure = server_context(self._home, self._host).wrap_socket(
            self._make_listener(0), server_side=True, do_handshake_on_connect=False)
        self._sockets.append(secure)
        self._serve(secure, lambda visitor: visitor.sendall(answer("200 OK", b"<h1>Not to be trusted")))
        connection.sendall(redirect(f"https://{self._host}:{secure.getsockname()[1]}/"))

    def end(self):
        self._close_listener()
        for each in self._sockets:
            each.close()

    def _listen(self):
        self._listener = self._make_listener(self._port)
        self._port = self._listener.getsockname()[1]
        self._serve(self._listener, self._handle)

    def _make_listener(self, port):
        if not self._network:
            return socket.create_server((self._host, port))
        return in_network(self._network, lambda: socket.create_server((self._host, port)))

    def _close_listener(self):
        if self._listener:
            self._listener.shutdown(socket.SHUT_RDWR)  # Wakes the thread that waits on it.
            self._listener.close()
            self._listener = None

    def _serve(self, listener, handle):
        def attend(connection):
            with connection, contextlib.suppress(OSError):
                handle(connection)

        def accept():
            with contextlib.suppress(OSError):  # The listener was closed.
                while True:
                    threading.Thread(target=attend, args=listener.accept()[:1], daemon=True).start()
        threading.Thread(target=accept, daemon=True).start()

    def _handle(self, connection):
        request = connection.recv(65536)
        if request.startswith(b"GET / "):
            self.asked.append(time.monotonic())
        self._behave(connection)


def in_network(process, action):
    """The result of something that a thread does in the network of another process."""
    results = []

    def enter():
        with open(f"/proc/{process.pid}/ns/net") as network:
            assert ctypes.CDLL(None, use_errno=True).setns(network.fileno(), CLONE_NEWNET) == 0
        results.append(action())
    thread = threading.Thread(target=enter)
    thread.start()
    thread.join()
    return results[0]


class Cable:
    """Two networks of their own, joined by one cable: the kiosk's and the server's."""

    KIOSK, SERVER = "198.18.0.1", "198.18.0.2"

    def __init__(self, home):
        needs("ip", "unshare", "nsenter")
        if os.geteuid() != 0:
            pytest.skip("needs root, for networks of its own")
        self._home = home
        self.kiosk, self.server = (home.start("unshare", "-n", "sleep", "infinity") for _ in range(2))
        own = os.readlink("/proc/self/ns/net")
        for process in (self.kiosk, self.server):
            wait_for("network of its own", lambda: process.poll() is not None or self._network(process) != own)
            if process.poll() is not None:
                pytest.skip("may not make a network of its own")
        self._at(self.kiosk, f"ip link add kiosk type veth peer name server netns {self.server.pid};"
                             f"ip address add {self.KIOSK}/24 dev kiosk; ip link set kiosk up; ip link set lo up")
        self._at(self.server, f"ip address add {self.SERVER}/24 dev server")
        self.plug_in()

    def join(self, bed):
        """Has the bed's program live in the kiosk's network."""
        script = bed.home.folder / "in-network"
        script.write_text(f'#!/bin/sh\nexec nsenter --target {self.kiosk.pid} --net "{bed.binary}" "$@"\n')
        script.chmod(0o755)
        bed.binary = str(script)

    def plug_in(self):
        self._at(self.server, "ip link set server up")

    def pull(self):
        self._at(self.server, "ip link set server down")

    def flap(self, times):
        self._at(self.server, f"for i in $(seq {times}); do ip link set server down; ip link set server up; done")

    def _at(self, process, commands):
        self._home.run("nsenter", "--target", process.pid, "--net", "sh", "-ec", commands)

    @staticmethod
    def _network(process):
        return os.readlink(f"/proc/{process.pid}/ns/net")
