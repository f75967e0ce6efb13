"""HTTP servers on this machine, each with threads of its own."""

import threading
from contextlib import suppress
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from socket import AF_INET, AF_INET6


class Handler(BaseHTTPRequestHandler):
    """What is asked for comes to `do_GET` and `do_POST` of a subclass."""

    def answer(self, body=b"", status=200, kind="text/html", **headers):
        self.send_response(status)
        for name, text in {"Content-Type": kind, "Content-Length": str(len(body)), **headers}.items():
            self.send_header(name.replace("_", "-"), text)
        self.end_headers()
        if status != 204:
            self.wfile.write(body)

    def content(self):
        return self.rfile.read(int(self.headers["Content-Length"] or 0))

    def handle(self):
        with suppress(OSError):  # The page went, or does not trust us.
            super().handle()

    def log_message(self, *_):
        pass


class Server(ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 256

    def __init__(self, handler, host="127.0.0.1", context=None):
        self.address_family = AF_INET6 if ":" in host else AF_INET
        super().__init__((host, 0), handler)
        if context:
            self.socket = context.wrap_socket(self.socket, server_side=True, do_handshake_on_connect=False)
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def end(self):
        self.shutdown()
        self.server_close()
