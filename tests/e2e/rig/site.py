"""A page whose every pixel is known, served on the loopback interface."""

import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

from PIL import Image

BAND = 16
COLOURS = {"left": "#1040f0", "right": "#f0c010", "top": "#e01030", "bottom": "#10c040"}
CENTRE = "#e8e0d8"
SIDES = {"left": "left:0;top:0;bottom:0;width", "right": "right:0;top:0;bottom:0;width",
         "top": "left:0;right:0;top:0;height", "bottom": "left:0;right:0;bottom:0;height"}
PAGE = (f"<!doctype html><title>Bands</title><style>html{{background:{CENTRE}}}*{{cursor:none}}</style>"
        + "".join(f"<div style='position:fixed;{SIDES[side]}:{BAND}px;background:{colour}'></div>"
                  for side, colour in COLOURS.items())).encode()
# Looks the same, and asks for what a hidden text field holds, once that has the keyboard.
FIELD = PAGE + b"<input autofocus style='position:fixed;opacity:0' onfocus=oninput() oninput='fetch(`/typed/${value}`)'>"


def page_picture(size):
    """What a sealed screen of this size shows.

    The page's view reaches one pixel below the screen, so that no line of the window shows there.
    """
    width, height = size[0], size[1] + 1
    picture = Image.new("RGB", (width, height), CENTRE)
    boxes = {"left": (0, 0, BAND, height), "right": (width - BAND, 0, width, height),
             "top": (0, 0, width, BAND), "bottom": (0, height - BAND, width, height)}
    for side, colour in COLOURS.items():
        picture.paste(colour, boxes[side])
    return picture.crop((0, 0, *size))


class Site:
    def __init__(self):
        site = self
        self.paths = []  # that were asked for

        class Handler(BaseHTTPRequestHandler):
            def do_GET(self):
                site.paths.append(self.path)
                page = FIELD if self.path == "/field" else PAGE
                self.send_response(200)
                self.send_header("Content-Type", "text/html")
                self.send_header("Content-Length", str(len(page)))
                self.end_headers()
                self.wfile.write(page)

            def log_message(self, *_):
                pass

        self._server = ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.url = f"http://127.0.0.1:{self._server.server_port}/"
        threading.Thread(target=self._server.serve_forever, daemon=True).start()

    @property
    def requests(self):
        return len(self.paths)

    def end(self):
        self._server.shutdown()
        self._server.server_close()
