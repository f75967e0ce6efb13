#!/usr/bin/python3
"""Quillox against a bare engine window and a browser's kiosk mode, in one run on one machine: time
to the first paint, memory, and what an idle minute costs. README.md says how to read the result."""

import argparse
import shutil
import statistics
import sys
import time
from pathlib import Path

from clients import (COUNTDOWN_SECONDS, ROOT, Client, ClientFailed, Launcher, add_common_arguments,
                     bare, chromium, in_rounds, machine, quillox, reach, reach_lines,
                     run_and_report)
from process_tree import IdleWatch, client_processes, proportional_set_size
from stage import Stage


class Bench(Launcher):
    def first_paint(self, client: Client) -> dict[str, float]:
        with self.showing(client) as seconds:
            return {"first_paint": seconds}

    def at_rest(self, client: Client, settle: float, idle: float) -> dict[str, float]:
        """Memory `settle` seconds after the paint, then an idle time, scaled to a minute."""
        with self.showing(client):
            time.sleep(settle)
            processes = client_processes(self.stage.helpers)
            memory = proportional_set_size(processes)
            cpu, switches = IdleWatch(self.stage.helpers).watch(idle)
            if not self.stage.shows_page():
                raise ClientFailed(f"{client.name} lost its page while idle")
            scale = 60 / idle
            return {"pss": memory, "processes": len(processes), "idle_cpu": cpu * scale,
                    "idle_switches": switches * scale}


def column(rounds: list[dict], client: str, figure: str) -> list[float]:
    return [one[client][figure] for one in rounds if client in one]


def ratio(rounds: list[dict], other: str, figure: str) -> float | None:
    """The median of the rounds' own ratios, so that slow drift of the machine cancels out."""
    pairs = list(zip(column(rounds, "quillox", figure), column(rounds, other, figure)))
    return statistics.median(mine / theirs for mine, theirs in pairs) if pairs else None


def median(rounds: list[dict], client: str, figure: str) -> float | None:
    values = column(rounds, client, figure)
    return statistics.median(values) if values else None


def reaches(paints: list[dict], rests: list[dict]) -> list[dict]:
    rows = [
        ("first paint, quillox / bare", ratio(paints, "bare", "first_paint"), "<=", 1.10),
        ("first paint, quillox / chromium", ratio(paints, "chromium", "first_paint"), "<", 1.00),
        ("memory, quillox / bare", ratio(rests, "bare", "pss"), "<=", 1.15),
        ("idle minute, quillox, CPU s", median(rests, "quillox", "idle_cpu"), "<", 0.1),
        ("idle minute, quillox, switches", median(rests, "quillox", "idle_switches"), "<", 120),
    ]
    return [reach(*row) for row in rows if row[1] is not None]


FIGURES = (("first_paint", "first paint s"), ("pss", "PSS MiB"), ("processes", "processes"),
           ("idle_cpu", "idle CPU s"), ("idle_switches", "idle switches"))


def summary(clients: list[Client], paints: list[dict], rests: list[dict]) -> dict[str, dict]:
    result: dict[str, dict] = {}
    for client in clients:
        for figure, _ in FIGURES:
            values = column(paints if figure == "first_paint" else rests, client.name, figure)
            if values:
                result.setdefault(client.name, {})[figure] = {
                    "median": statistics.median(values), "min": min(values), "max": max(values)}
    return result


def report(result: dict) -> str:
    lines = ["", f"{'median (range)':<14}" + "".join(f"{title:>26}" for _, title in FIGURES)]
    for name, figures in result["clients"].items():
        cells = [f"{one['median']:.4g} ({one['min']:.3g}-{one['max']:.3g})"
                 if (one := figures.get(figure)) else "" for figure, _ in FIGURES]
        lines.append(f"{name:<14}" + "".join(f"{cell:>26}" for cell in cells))
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "first_paint")
    parser.add_argument("--chromium", default=shutil.which("chromium") or "chromium")
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--skip", action="append", default=[],
                        choices=["quillox", "bare", "chromium"], help="leave a client out")
    parser.add_argument("--pairs", type=int, default=9, help="rounds of first paint")
    parser.add_argument("--rests", type=int, default=3, help="rounds of memory and idling")
    parser.add_argument("--settle", type=float, default=20, help="seconds from paint to memory")
    parser.add_argument("--idle", type=float, default=60, help="seconds of idling watched")
    parser.add_argument("--quick", action="store_true",
                        help="3 pairs, one rest of 5 + 10 s: for development, not for claims")
    options = parser.parse_args()
    if options.quick:
        options.pairs, options.rests, options.settle, options.idle = 3, 1, 5, 10
    return options


def run(options: argparse.Namespace, folder: Path) -> dict:
    known = [quillox(options.quillox), bare(options.bare), chromium(options.chromium)]
    clients = [client for client in known if client.name not in options.skip]
    with Stage(options.site, options.display) as stage:
        bench = Bench(stage, folder)
        before = machine()
        # The first run of a profile fills its caches and is not counted.
        in_rounds(clients, 1, bench.first_paint, "warm-up, discarded")
        paints = in_rounds(clients, options.pairs, bench.first_paint, "first paint s")
        rests = in_rounds(clients, options.rests,
                          lambda one: bench.at_rest(one, options.settle, options.idle),
                          "MiB/processes/CPU s/switches")
    return {"machine": before, "quick": options.quick, "countdown_subtracted": COUNTDOWN_SECONDS,
            "clients": summary(clients, paints, rests), "reaches": reaches(paints, rests),
            "rounds": {"first_paint": paints, "at_rest": rests}}


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
