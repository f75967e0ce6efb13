#!/usr/bin/python3
"""How much later a page hears of a key while it is sealed: Quillox against a bare engine window,
in one run on one machine. README.md says what the figures include."""

import argparse
import base64
import contextlib
import hashlib
import random
import socket
import statistics
import sys
import time
from collections.abc import Iterator
from pathlib import Path
from tempfile import TemporaryDirectory

from Xlib.display import Display

from clients import (Client, ClientFailed, Launcher, add_common_arguments, bare, in_rounds, machine,
                     quillox, reach, reach_lines, run_and_report)
from keyboard import Keyboard
from stage import HEIGHT, WIDTH, Stage

# The first presses after a page has come find caches cold.
DISCARDED_PRESSES = 10
WEBSOCKET_GUID = b"258EAFA5-E914-47DA-95CA-C5AB0DC85B11"
ANSWER_DEADLINE_SECONDS = 5
PATCH = (WIDTH // 2, HEIGHT // 2)
PAGE = """<!doctype html><title>Keys</title>
<body style="margin:0;background:#223">
<i id="patch" style="position:fixed;left:calc(50%% - 32px);top:calc(50%% - 32px);
width:64px;height:64px;background:rgb(0,0,0)"></i>
<script>
const telling = new WebSocket("ws://127.0.0.1:%d/");
let presses = 0;
addEventListener("keydown", event => {
    if (event.repeat)
        return;
    telling.send("k");
    patch.style.background = ++presses %% 2 ? "rgb(255,255,255)" : "rgb(0,0,0)";
});
</script>
</body>
"""


class Listener:
    """Hears the page's word for every key, over one WebSocket connection of each page."""

    def __init__(self):
        self.server = socket.create_server(("127.0.0.1", 0))
        self.server.settimeout(ANSWER_DEADLINE_SECONDS)
        self.port = self.server.getsockname()[1]

    @contextlib.contextmanager
    def page(self) -> Iterator[socket.socket]:
        connection, _ = self.server.accept()
        with connection:
            connection.settimeout(ANSWER_DEADLINE_SECONDS)
            request = b""
            while b"\r\n\r\n" not in request:
                if not (part := connection.recv(4096)):
                    raise ClientFailed("the page hung up")
                request += part
            headers = dict(line.split(b": ", 1) for line in request.split(b"\r\n")[1:]
                           if b": " in line)
            key = next(value for name, value in headers.items()
                       if name.lower() == b"sec-websocket-key")
            accept = base64.b64encode(hashlib.sha1(key.strip() + WEBSOCKET_GUID).digest())
            connection.sendall(b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\n"
                               b"Connection: Upgrade\r\nSec-WebSocket-Accept: " + accept +
                               b"\r\n\r\n")
            yield connection


class Latency(Launcher):
    def __init__(self, stage: Stage, folder: Path, listener: Listener, presses: int):
        super().__init__(stage, folder)
        self.listener = listener
        self.presses = presses
        self.heard: dict[str, list[list[float]]] = {}
        self.painted: dict[str, list[list[float]]] = {}
        # The same pauses for all, and none that keeps step with a frame.
        self.pauses = random.Random(1)

    def round(self, client: Client) -> dict[str, float]:
        with self.showing(client), self.listener.page() as page:
            with contextlib.closing(Display(self.stage.display)) as display:
                keyboard = Keyboard(display)
                self.await_keyboard(keyboard, page, client)
                times = [self.press(keyboard, page)
                         for _ in range(self.presses + DISCARDED_PRESSES)][DISCARDED_PRESSES:]
        heard, painted = ([milliseconds[part] for milliseconds in times] for part in (0, 1))
        self.heard.setdefault(client.name, []).append(heard)
        self.painted.setdefault(client.name, []).append(painted)
        return {"heard": statistics.median(heard), "painted": statistics.median(painted)}

    def await_keyboard(self, keyboard: Keyboard, page: socket.socket, client: Client) -> None:
        """The window may be shown before the keyboard is with it."""
        page.settimeout(0.3)
        for _ in range(30):
            with keyboard.hold("a"), contextlib.suppress(TimeoutError):
                if page.recv(64):
                    page.settimeout(ANSWER_DEADLINE_SECONDS)
                    time.sleep(0.2)
                    return
        raise ClientFailed(f"{client.name}: no key reaches its page")

    def press(self, keyboard: Keyboard, page: socket.socket) -> tuple[float, float]:
        """Milliseconds from a press until the page tells of it, and until it has painted."""
        before = self.stage.pixel(*PATCH)
        with keyboard.hold("a") as start:
            if not page.recv(64):
                raise ClientFailed("the page hung up")
            heard = time.monotonic()
            while self.stage.pixel(*PATCH) == before:
                if time.monotonic() - start > ANSWER_DEADLINE_SECONDS:
                    raise ClientFailed("the page did not paint")
                time.sleep(0.001)
            painted = time.monotonic()
        time.sleep(self.pauses.uniform(0.06, 0.12))
        return (heard - start) * 1e3, (painted - start) * 1e3


def percentile(values: list[float], share: float) -> float:
    return statistics.quantiles(values, n=100, method="inclusive")[round(share * 100) - 1]


def figures(rounds: dict[str, list[list[float]]]) -> dict[str, dict]:
    every = {name: [value for one in values for value in one] for name, values in rounds.items()}
    return {name: {"presses": len(values), "median": statistics.median(values),
                   "p95": percentile(values, 0.95)} for name, values in every.items()}


def difference(rounds: dict[str, list[list[float]]]) -> dict[str, float]:
    """Of the medians of all presses; beside it the range of the rounds' own differences."""
    total = figures(rounds)
    own = [statistics.median(mine) - statistics.median(theirs)
           for mine, theirs in zip(rounds["quillox"], rounds["bare"])]
    return {"median": total["quillox"]["median"] - total["bare"]["median"],
            "p95": total["quillox"]["p95"] - total["bare"]["p95"],
            "lowest_round": min(own), "highest_round": max(own)}


def report(result: dict) -> str:
    lines = ["", f"{'ms from the press':<20}{'presses':>9}{'median':>9}{'p95':>9}"]
    for what in ("heard", "painted"):
        for name, row in result[what].items():
            lines.append(f"{what + ', ' + name:<20}{row['presses']:>9}{row['median']:>9.2f}"
                         f"{row['p95']:>9.2f}")
        row = result["difference"][what]
        lines.append(f"{'difference':<29}{row['median']:>9.2f}{row['p95']:>9.2f}   "
                     f"rounds {row['lowest_round']:.2f} to {row['highest_round']:.2f}")
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def run(options: argparse.Namespace, folder: Path) -> dict:
    listener = Listener()
    with TemporaryDirectory() as site:
        Path(site, "index.html").write_text(PAGE % listener.port)
        with Stage(Path(site), options.display) as stage:
            clients = [quillox(options.quillox), bare(options.bare)]
            latency = Latency(stage, folder, listener, options.presses)
            before = machine()
            in_rounds(clients, 1, latency.round, "warm-up, discarded")
            latency.heard.clear()
            latency.painted.clear()
            in_rounds(clients, options.rounds, latency.round, "heard/painted ms")
    heard, painted = difference(latency.heard), difference(latency.painted)
    return {"machine": before, "heard": figures(latency.heard),
            "painted": figures(latency.painted),
            "difference": {"heard": heard, "painted": painted},
            "reaches": [reach("key to the page, quillox - bare, ms", heard["median"], "<=", 1.0)],
            "rounds": {"heard": latency.heard, "painted": latency.painted}}


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "key_latency")
    parser.add_argument("--rounds", type=int, default=8)
    parser.add_argument("--presses", type=int, default=60, help="presses a round")
    return parser.parse_args()


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
