"""A web server with faults: /FAULT/FOLDER/FILE serves FILE of that folder below the given one, in its own
way. Prints its port, and then what it is asked for."""

import http.server
import pathlib
import re
import ssl
import sys

ROOT = pathlib.Path(sys.argv[1])
BLOCK = 16384


class Handler(http.server.BaseHTTPRequestHandler):
    def log_message(self, *_):
        pass

    def do_GET(self):
        _, fault, folder, name = self.path.split("/")
        print(self.path, self.headers.get("Range", "-"), flush=True)
        path = ROOT / folder / name
        if not path.is_file():
            return self.send_error(404)
        contents = path.read_bytes()
        is_archive = name.endswith(".gz")
        getattr(self, fault.replace("-", "_"), self.good)(contents, is_archive)

    def answer(self, contents, length, status=200, **headers):
        self.send_response(status)
        if length is not None:
            self.send_header("Content-Length", str(length))
        for header, value in headers.items():
            self.send_header(header.replace("_", "-"), value)
        self.end_headers()
        self.wfile.write(contents)

    def good(self, contents, _):
        asked = re.fullmatch(r"bytes=(\d+)-", self.headers.get("Range", ""))
        if not asked:
            return self.answer(contents, len(contents))
        first = int(asked[1])
        if first >= len(contents):
            return self.send_error(416)
        self.answer(contents[first:], len(contents) - first, 206,
                    Content_Range=f"bytes {first}-{len(contents) - 1}/{len(contents)}")

    def redirect_manifest(self, contents, is_archive):
        self.redirect(contents, is_archive, not is_archive)

    def redirect_archive(self, contents, is_archive):
        self.redirect(contents, is_archive, is_archive)

    def redirect(self, contents, is_archive, is_now):
        if not is_now:
            return self.good(contents, is_archive)
        port = self.server.server_address[1]
        target = re.sub(r"^/[^/]*", "/good", self.path)
        self.answer(b"", 0, 302, Location=f"http://127.0.0.2:{port}{target}")

    def short(self, contents, is_archive):
        """The file on the server is only a half."""
        half = contents[:len(contents) // 2]
        self.answer(half, len(half))

    def short_archive(self, contents, is_archive):
        (self.short if is_archive else self.good)(contents, is_archive)

    def endless(self, contents, is_archive):
        """More than was announced, no word of how much, and no end."""
        self.answer(contents + b" " * BLOCK, None)
        self.silent(contents, is_archive)

    def endless_archive(self, contents, is_archive):
        (self.endless if is_archive else self.good)(contents, is_archive)

    def dies(self, contents, is_archive):
        """Breaks off in the middle, unless it is asked for the rest."""
        if is_archive and "Range" not in self.headers:
            self.answer(contents[:len(contents) // 2], len(contents))
        else:
            self.good(contents, is_archive)

    def forgets(self, contents, is_archive):
        """The same, but always gives the whole."""
        if is_archive and "Range" not in self.headers:
            self.answer(contents[:len(contents) // 2], len(contents))
        else:
            self.answer(contents, len(contents))

    def silent(self, contents, is_archive):
        """Says nothing until the client has enough of it."""
        self.rfile.read(1)


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        """Clients that have had enough are no news."""


server = Server(("127.0.0.1", 0), Handler)
if len(sys.argv) > 2:  # A file with a key and its certificate.
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(sys.argv[2])
    server.socket = context.wrap_socket(server.socket, server_side=True, do_handshake_on_connect=False)
print(server.server_address[1], flush=True)
server.serve_forever()
