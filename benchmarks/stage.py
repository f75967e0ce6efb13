"""The private machine that the clients are measured on: an X screen with a window manager, a
session bus and a page server, all ended with it."""

import contextlib
import multiprocessing
import os
import subprocess
import time
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path

from Xlib import X
from Xlib.display import Display

from process_tree import adopt_orphans

WIDTH, HEIGHT = 1920, 1080
MARKER = (255, 0, 200)
MARKER_STYLE = "position:fixed;z-index:9;width:64px;height:64px"
MARKER_PICTURE = (f'<svg xmlns="http://www.w3.org/2000/svg" width="64" height="64">'
                  f'<rect width="64" height="64" fill="rgb{MARKER}"/></svg>')
TYPES = {".html": "text/html; charset=utf-8", ".css": "text/css", ".svg": "image/svg+xml",
         ".js": "text/javascript"}


def marked(page: str) -> str:
    markers = (f'<i style="{MARKER_STYLE};left:0;bottom:0;background:rgb{MARKER}"></i>'
               f'<i style="{MARKER_STYLE};right:0;top:0;background:rgb{MARKER}"></i>'
               f'<img src="/marker.svg" style="{MARKER_STYLE};left:64px;bottom:0">')
    return page.replace("</body>", markers + "</body>")


def pages_of(site: Path) -> dict[str, tuple[str, bytes]]:
    """Address path to type and body; the pages carry the markers."""
    pages = {"/marker.svg": (TYPES[".svg"], MARKER_PICTURE.encode())}
    for path in site.rglob("*"):
        if path.suffix not in TYPES:
            continue
        body = path.read_bytes()
        if path.suffix == ".html":
            body = marked(body.decode()).encode()
        pages["/" + path.relative_to(site).as_posix()] = (TYPES[path.suffix], body)
    pages["/"] = pages["/index.html"]
    return pages


class Server(ThreadingHTTPServer):
    def handle_error(self, *_) -> None:
        """A client that is ended in the middle of a request is no news."""


def serve(pages: dict[str, tuple[str, bytes]], port, host: str = "127.0.0.1") -> None:
    class Handler(BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"

        def do_GET(self) -> None:
            kind, body = pages.get(self.path.partition("?")[0], ("text/plain", b""))
            self.send_response(200 if body else 404)
            self.send_header("Content-Type", kind)
            self.send_header("Content-Length", str(len(body)))
            self.send_header("Cache-Control", "no-cache")
            self.end_headers()
            self.wfile.write(body)

        def log_message(self, *_) -> None:
            pass

    server = Server((host, 0), Handler)
    port.send(server.server_port)
    server.serve_forever()


class Stage:
    """A context. `helpers` are the processes that belong to no client."""

    size = WIDTH, HEIGHT
    has_window_manager = True

    def __init__(self, site: Path, display: str | None):
        self.site = site
        self.wanted_display = display
        self.cleanup = contextlib.ExitStack()
        self.helpers: set[int] = set()

    def __enter__(self) -> "Stage":
        try:
            self.start_server()
            self.start_screen()
            self.bus = self.start_bus()
            self.screen = Display(self.display)
            self.cleanup.callback(self.screen.close)
            if self.has_window_manager:
                self.start(["openbox"], env={**os.environ, "DISPLAY": self.display})
                self.await_window_manager()
        except BaseException:
            self.cleanup.close()
            raise
        return self

    def __exit__(self, *_) -> None:
        self.cleanup.close()

    def start(self, command: list[str], **options) -> subprocess.Popen:
        quiet = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL,
                 "stderr": subprocess.DEVNULL}
        process = subprocess.Popen(command, **{**quiet, **options})
        self.helpers.add(process.pid)
        self.cleanup.callback(process.wait)
        self.cleanup.callback(process.terminate)
        return process

    def pages(self) -> dict[str, tuple[str, bytes]]:
        return pages_of(self.site)

    def start_server(self) -> None:
        # In a process of its own, so that serving never delays the look at the screen.
        receiver, sender = multiprocessing.Pipe(duplex=False)
        server = multiprocessing.Process(target=serve, args=(self.pages(), sender))
        server.start()
        self.helpers.add(server.pid)
        self.cleanup.callback(server.join)
        self.cleanup.callback(server.terminate)
        if not receiver.poll(10):
            raise RuntimeError("the page server did not start")
        self.address = f"http://127.0.0.1:{receiver.recv()}/"

    def start_screen(self) -> None:
        display, number = os.pipe()
        chosen = [self.wanted_display] if self.wanted_display else []
        # No input comes for many minutes: the server must not blank the screen meanwhile.
        self.start(["Xvfb", *chosen, "-displayfd", str(number), "-nolisten", "tcp", "-s", "0",
                    "-screen", "0", "{}x{}x24".format(*self.size)], pass_fds=[number])
        os.close(number)
        with os.fdopen(display) as file:
            line = file.readline().strip()
        if not line:
            raise RuntimeError("Xvfb did not start")
        self.display = ":" + line

    def start_bus(self) -> str:
        # The bus keeps the services that clients make it start: a desktop has them running anyway,
        # and they are no part of the client that happened to ask first.
        bus = self.start(["dbus-daemon", "--session", "--nofork", "--print-address"],
                         stdout=subprocess.PIPE, text=True, preexec_fn=adopt_orphans,
                         env={**os.environ, "DISPLAY": self.display})
        return bus.stdout.readline().strip()

    def await_window_manager(self) -> None:
        root = self.screen.screen().root
        check = self.screen.intern_atom("_NET_SUPPORTING_WM_CHECK")
        deadline = time.monotonic() + 10
        while root.get_full_property(check, X.AnyPropertyType) is None:
            if time.monotonic() > deadline:
                raise RuntimeError("the window manager did not start")
            time.sleep(0.02)

    def pixel(self, x: int, y: int) -> tuple[int, int, int]:
        image = self.screen.screen().root.get_image(x, y, 1, 1, X.ZPixmap, 0xFFFFFFFF)
        blue, green, red = image.data[:3]
        return red, green, blue

    def shows_page(self) -> bool:
        # Two markers belong to the document, in opposite corners so that the page fills the screen;
        # another is a picture of its own. The page counts as painted when all are on the screen.
        width, height = self.size
        points = (32, height - 32), (width - 32, 32), (96, height - 32)
        return all(self.pixel(*point) == MARKER for point in points)
