#!/usr/bin/python3
"""The setup window against an empty window of the same toolkit, in turns: from the program's start
until its window is painted and has the keyboard. README.md says how to read the result."""

import argparse
import contextlib
import json
import statistics
import sys
import time
from collections.abc import Iterator
from pathlib import Path

from Xlib import X

from clients import (PAINT_DEADLINE_SECONDS, POLL_SECONDS, ROOT, Client, ClientFailed, Launcher,
                     add_common_arguments, in_rounds, machine, reach, reach_lines, run_and_report)
from stage import HEIGHT, WIDTH, Stage

MIDDLE = WIDTH // 2, HEIGHT // 2


class Starts(Launcher):
    """The operator screen's window stands over the middle of the stage, like the empty one."""

    def __init__(self, stage: Stage, folder: Path):
        super().__init__(stage, folder)
        self.root = stage.screen.screen().root
        self.active = stage.screen.intern_atom("_NET_ACTIVE_WINDOW")
        self.bare_stage = stage.pixel(*MIDDLE)

    def measure(self, client: Client) -> dict[str, float]:
        with self.usable(client) as seconds:
            return {"start": seconds}

    @contextlib.contextmanager
    def usable(self, client: Client) -> Iterator[float]:
        """The client with a usable window. Gives the seconds from the client's start until then."""
        self.await_bare_stage()
        with self.running(client) as (process, begin):
            while not self.is_usable():
                if process.poll() is not None or time.monotonic() - begin > PAINT_DEADLINE_SECONDS:
                    raise self.failure(client, process, "window")
                time.sleep(POLL_SECONDS)
            yield time.monotonic() - begin

    def is_usable(self) -> bool:
        """The toolkit paints nothing before all of the window is laid out."""
        return self.stage.pixel(*MIDDLE) != self.bare_stage and self.active_window() != X.NONE

    def active_window(self) -> int:
        found = self.root.get_full_property(self.active, X.AnyPropertyType)
        return found.value[0] if found else X.NONE

    def await_bare_stage(self) -> None:
        deadline = time.monotonic() + 5
        while self.is_usable() or self.stage.pixel(*MIDDLE) != self.bare_stage:
            if time.monotonic() > deadline:
                raise ClientFailed("the window before did not go away")
            time.sleep(POLL_SECONDS)


def setup(program: str) -> Client:
    def prepare(profile: Path, address: str) -> list[str]:
        defaults = profile / "config/Quillox/defaults.json"
        if not defaults.exists():
            defaults.parent.mkdir(parents=True)
            settings = {"url": address, "autoUpdate": False}
            defaults.write_text(json.dumps({"hasOnboarded": True, "kioskSettings": settings}))
        return [program]

    return Client("setup", prepare)


def empty(program: str) -> Client:
    return Client("empty", lambda profile, address: [program])


def summary(rounds: list[dict], client: str) -> dict[str, float]:
    values = [one[client]["start"] for one in rounds]
    return {"median": statistics.median(values), "min": min(values), "max": max(values)}


def report(result: dict) -> str:
    lines = ["", f"{'start to usable, s':<20}{'median':>10}{'least':>10}{'most':>10}"]
    for name, row in result["clients"].items():
        lines.append(f"{name:<20}" + "".join(f"{row[key]:>10.4f}" for key in row))
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def run(options: argparse.Namespace, folder: Path) -> dict:
    clients = [setup(options.quillox), empty(options.empty)]
    with Stage(options.site, options.display) as stage:
        starts = Starts(stage, folder)
        before = machine()
        in_rounds(clients, 1, starts.measure, "warm-up, discarded")
        rounds = in_rounds(clients, options.pairs, starts.measure, "start s")
    ratio = statistics.median(one["setup"]["start"] / one["empty"]["start"] for one in rounds)
    return {"machine": before, "clients": {name: summary(rounds, name) for name in rounds[0]},
            "reaches": [reach("start to usable, setup / empty", ratio, "<=", 1.20)],
            "rounds": rounds}


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "setup_start")
    parser.add_argument("--empty", default=str(ROOT / "build/bench/benchmarks/empty_window"))
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--pairs", type=int, default=15)
    return parser.parse_args()


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
