#!/usr/bin/python3
"""How long a sealed page is away: after its process was killed, beside a bare window that loads the
page again, and after the network is back. README.md says how to read the result."""

import argparse
import contextlib
import ctypes
import itertools
import multiprocessing
import os
import random
import signal
import statistics
import subprocess
import sys
import time
from collections.abc import Callable
from pathlib import Path
from typing import TypeVar

from clients import (POLL_SECONDS, ROOT, Client, ClientFailed, Figures, Launcher,
                     add_common_arguments, in_rounds, machine, quillox, reach, reach_lines,
                     run_and_report)
from process_tree import client_processes, read
from stage import HEIGHT, WIDTH, Stage, pages_of, serve

# In the middle of the screen, over the page and everything in it.
COUNTER_POINT = (WIDTH // 2, HEIGHT // 2)
COUNTER = ('<i style="position:fixed;z-index:9;left:50%;top:50%;width:64px;height:64px;'
           'margin:-32px;background:rgb(200,0,{})"></i></body>')
# A page that has lived for ten seconds is a good one, whose next end is the first in a row.
LIFE_SECONDS = 10.5
DEADLINE_SECONDS = 30
CLONE_NEWNET = 0x40000000
Value = TypeVar("Value")
KIOSK, SERVER = "198.18.0.1", "198.18.0.2"


class CountingPages(dict):
    """Pages of which the start page shows, by a colour, how often it was asked for."""

    def __init__(self, site: Path):
        super().__init__(pages_of(site))
        self.count = itertools.count()

    def get(self, path: str, default):
        kind, body = super().get(path, default)
        if path == "/":
            body = body.replace(b"</body>", COUNTER.format(next(self.count) % 256).encode())
        return kind, body


class CountingStage(Stage):
    def pages(self) -> dict[str, tuple[str, bytes]]:
        return CountingPages(self.site)

    def shown_load(self) -> int | None:
        """Which of the loads of the page is on the screen; none while there is no page."""
        red, green, blue = self.pixel(*COUNTER_POINT)
        return blue if (red, green) == (200, 0) else None


class CableStage(CountingStage):
    """Clients live in the network of this process; the page comes over a cable from another. Both
    are new ones."""

    def start_server(self) -> None:
        ends = multiprocessing.Pipe()
        server = multiprocessing.Process(target=serve_in_network, args=(self.pages(), ends[1]))
        server.start()
        self.helpers.add(server.pid)
        self.cleanup.callback(server.join)
        self.cleanup.callback(server.terminate)
        self.server = server.pid
        await_word(ends[0])
        run_all("ip link set lo up",
                f"ip link add kiosk type veth peer name server netns {self.server}",
                f"ip address add {KIOSK}/24 dev kiosk", "ip link set kiosk up")
        self.at_server(f"ip address add {SERVER}/24 dev server")
        self.plug_in()
        ends[0].send("the cable is there")
        self.address = f"http://{SERVER}:{await_word(ends[0])}/"

    def plug_in(self) -> None:
        self.at_server("ip link set server up")

    def pull(self) -> None:
        self.at_server("ip link set server down")

    def at_server(self, command: str) -> None:
        run_all(f"nsenter --target {self.server} --net {command}")


def serve_in_network(pages: dict[str, tuple[str, bytes]], parent) -> None:
    enter_new_network()
    parent.send("in a network of its own")
    parent.recv()
    serve(pages, parent, SERVER)


def enter_new_network() -> bool:
    return ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNET) == 0


def await_word(pipe):
    if not pipe.poll(10):
        raise RuntimeError("the page server did not start")
    return pipe.recv()


def run_all(*commands: str) -> None:
    for command in commands:
        subprocess.run(command.split(), check=True)


class Recoveries(Launcher):
    def __init__(self, stage: CountingStage, folder: Path, times: int):
        super().__init__(stage, folder)
        self.times = times
        self.seconds: dict[str, list[float]] = {}

    def round(self, client: Client) -> Figures:
        with self.showing(client):
            seconds = [self.kill() for _ in range(self.times)]
        self.seconds.setdefault(client.name, []).extend(seconds)
        return {"back": statistics.median(seconds), "longest": max(seconds)}

    def kill(self) -> float:
        """Seconds from the end of the page's process until the page of a new load shows."""
        before = self.await_that("page", self.stage.shown_load)
        time.sleep(LIFE_SECONDS)
        pages = [process for process in client_processes(self.stage.helpers)
                 if (read(f"/proc/{process}/comm") or "").startswith("WebKitWebProc")]
        if not pages:
            raise ClientFailed("no process of a page to kill")
        start = time.monotonic()
        for page in pages:
            with contextlib.suppress(ProcessLookupError):
                os.kill(page, signal.SIGKILL)
        self.await_that("page again", lambda: self.shows_other(before))
        return time.monotonic() - start

    def outages(self, client: Client) -> list[float]:
        with self.showing(client):
            return [self.outage() for _ in range(self.times)]

    def outage(self) -> float:
        """Seconds from plugging the cable in until the page of a new load shows."""
        before = self.await_that("page", self.stage.shown_load)
        time.sleep(LIFE_SECONDS)
        self.stage.pull()
        self.await_that("notice", lambda: self.stage.shown_load() is None)
        # The network is back at any moment of what the program does meanwhile.
        time.sleep(random.uniform(0, 6))
        start = time.monotonic()
        self.stage.plug_in()
        self.await_that("page again", lambda: self.shows_other(before))
        return time.monotonic() - start

    def shows_other(self, load: int) -> bool:
        return self.stage.shown_load() not in (None, load) and self.stage.shows_page()

    @staticmethod
    def await_that(what: str, condition: Callable[[], Value]) -> Value:
        deadline = time.monotonic() + DEADLINE_SECONDS
        while time.monotonic() < deadline:
            value = condition()
            if value is not None and value is not False:
                return value
            time.sleep(POLL_SECONDS)
        raise ClientFailed(f"{what}: did not come")


def reloading(program: str) -> Client:
    return Client("bare", lambda profile, address: [program, address, "--reload"])


def summary(seconds: list[float]) -> dict[str, float]:
    return {"times": len(seconds), "median": statistics.median(seconds),
            "shortest": min(seconds), "longest": max(seconds)}


def report(result: dict) -> str:
    lines = ["", f"{'seconds until the page is back':<36}{'times':>7}{'median':>9}{'range':>16}"]
    for what, row in result["back"].items():
        spread = f"{row['shortest']:.3f}-{row['longest']:.3f}"
        lines.append(f"{what:<36}{row['times']:>7}{row['median']:>9.3f}{spread:>16}")
    lines += ["", f"killed, quillox / bare: {result['killed_to_bare']:.2f}"]
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "recovery")
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--rounds", type=int, default=4)
    parser.add_argument("--kills", type=int, default=5, help="kills a round")
    parser.add_argument("--outages", type=int, default=10)
    return parser.parse_args()


def run(options: argparse.Namespace, folder: Path) -> dict:
    before = machine()
    with CountingStage(options.site, options.display) as stage:
        kills = Recoveries(stage, folder / "kills", options.kills)
        rounds = in_rounds([quillox(options.quillox), reloading(options.bare)], options.rounds,
                           kills.round, "s until back, longest")
    ratio = statistics.median(one["quillox"]["back"] / one["bare"]["back"] for one in rounds)
    back = {f"page killed, {name}": summary(seconds) for name, seconds in kills.seconds.items()}
    reaches = [reach("page killed, median, s", back["page killed, quillox"]["median"], "<", 0.4)]
    everything = dict(kills.seconds)
    if enter_new_network():
        with CableStage(options.site, options.display) as stage:
            outages = Recoveries(stage, folder / "outages", options.outages)
            everything["outages"] = outages.outages(quillox(options.quillox))
        back["network away, quillox"] = summary(everything["outages"])
        reaches.append(reach("network away, longest, s", max(everything["outages"]), "<", 5))
    else:
        print("no outages: not allowed to make a network of its own", file=sys.stderr)
    return {"machine": before, "back": back, "killed_to_bare": ratio, "reaches": reaches,
            "rounds": rounds, "everything": everything}


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
