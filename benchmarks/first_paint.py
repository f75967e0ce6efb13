#!/usr/bin/python3
"""Quillox against a bare engine window and a browser's kiosk mode, in one run on one machine: time
to the first paint, memory, and what an idle minute costs. README.md says how to read the result."""

import argparse
import contextlib
import json
import os
import platform
import shutil
import statistics
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from pathlib import Path

from process_tree import (IdleWatch, adopt_orphans, client_processes, end_client,
                          proportional_set_size)
from stage import Stage

ROOT = Path(__file__).resolve().parent.parent
POLL_SECONDS = 0.002
PAINT_DEADLINE_SECONDS = 60
# From the launch decision to the seal, by design. It is a promise to the operator and no work, so
# exactly this much, and nothing measured, is taken off the time of the sealed page.
COUNTDOWN_SECONDS = 5.000


class ClientFailed(Exception):
    """The client ended, or showed no page in time."""


@dataclass(frozen=True)
class Client:
    name: str
    # Given the profile folder and the address, writes what the client needs; returns its command.
    prepare: Callable[[Path, str], list[str]]
    # Seconds of its time to the first paint that are a prescribed wait.
    prescribed_wait: float = 0.0


def quillox(program: str) -> Client:
    def prepare(profile: Path, address: str) -> list[str]:
        defaults = profile / "config/Quillox/defaults.json"
        if not defaults.exists():
            defaults.parent.mkdir(parents=True)
            settings = {"url": address, "autoStartKiosk": True, "autoUpdate": False}
            defaults.write_text(json.dumps({"hasOnboarded": True, "kioskSettings": settings}))
        return [program]

    return Client("quillox", prepare, COUNTDOWN_SECONDS)


def bare(program: str) -> Client:
    return Client("bare", lambda profile, address: [program, address])


def chromium(program: str) -> Client:
    def prepare(profile: Path, address: str) -> list[str]:
        # Root has no user namespace to sandbox in; the test type hides the bar that warns of it.
        as_root = ["--no-sandbox", "--test-type"] if os.geteuid() == 0 else []
        return [program, "--kiosk", "--no-first-run", "--no-default-browser-check",
                "--password-store=basic", f"--user-data-dir={profile / 'chromium'}", *as_root,
                address]

    return Client("chromium", prepare)


class Bench:
    def __init__(self, stage: Stage, clients: list[Client], folder: Path):
        self.stage = stage
        self.clients = clients
        self.folder = folder

    def environment(self, profile: Path) -> dict[str, str]:
        runtime = profile / "run"
        runtime.mkdir(mode=0o700, parents=True, exist_ok=True)
        return {
            "PATH": os.environ["PATH"], "LANG": "C.UTF-8", "HOME": str(profile),
            "DISPLAY": self.stage.display, "GDK_BACKEND": "x11",
            "DBUS_SESSION_BUS_ADDRESS": self.stage.bus, "XDG_RUNTIME_DIR": str(runtime),
            "XDG_CONFIG_HOME": str(profile / "config"), "XDG_DATA_HOME": str(profile / "data"),
            "XDG_CACHE_HOME": str(profile / "cache"), "XDG_STATE_HOME": str(profile / "state"),
        }

    @contextlib.contextmanager
    def showing(self, client: Client) -> Iterator[float]:
        """The client with its page on the screen. Gives the seconds from the client's start until
        then, less its prescribed wait."""
        if self.stage.shows_page():
            raise ClientFailed(f"{client.name}: the screen already shows the page")
        profile = self.folder / client.name
        environment = self.environment(profile)
        command = client.prepare(profile, self.stage.address)
        log = self.folder / f"{client.name}.log"
        with log.open("wb") as output:
            start = time.monotonic()
            process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                       stdout=output, stderr=output, start_new_session=True)
        try:
            painted = self.await_page(process, start)
            if painted is None:
                raise ClientFailed(f"{client.name} showed no page (exit {process.poll()}):\n"
                                   f"{log.read_text(errors='replace')[-2000:]}")
            yield painted - start - client.prescribed_wait
        finally:
            end_client(process, self.stage.helpers)
            self.await_no_page()

    def await_page(self, process: subprocess.Popen, start: float) -> float | None:
        while process.poll() is None and time.monotonic() - start < PAINT_DEADLINE_SECONDS:
            if self.stage.shows_page():
                return time.monotonic()
            time.sleep(POLL_SECONDS)
        return None

    def await_no_page(self) -> None:
        # The picture goes with its window, a little after its process.
        deadline = time.monotonic() + 5
        while self.stage.shows_page() and time.monotonic() < deadline:
            time.sleep(0.02)

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

    def rounds(self, count: int, measure: Callable[[Client], dict], title: str) -> list[dict]:
        """Every client once a round, each round in the reverse order of the one before."""
        results = []
        for number in range(count):
            order = self.clients if number % 2 == 0 else self.clients[::-1]
            results.append({client.name: measure(client) for client in order})
            print(f"{title} {number + 1}/{count}: " + ", ".join(
                f"{name} " + "/".join(f"{value:.4g}" for value in results[-1][name].values())
                for name in sorted(results[-1])), file=sys.stderr, flush=True)
        return results


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
    return [{"what": what, "value": value, "reach": f"{sign} {limit:g}",
             "met": value < limit or (sign == "<=" and value == limit)}
            for what, value, sign, limit in rows if value is not None]


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
    lines.append("")
    for row in result["reaches"]:
        lines.append(f"{row['what']:<34}{row['value']:>10.3f}  reach {row['reach']:<8}"
                     f"{'met' if row['met'] else 'MISSED'}")
    return "\n".join(lines)


def machine() -> dict:
    return {"kernel": platform.release(), "processors": os.cpu_count(),
            "load": os.getloadavg()[0], "root": os.geteuid() == 0,
            "gpu": any(Path("/dev/dri").glob("renderD*"))}


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--quillox", default=str(ROOT / "build/release/quillox"))
    parser.add_argument("--bare", default=str(ROOT / "build/bench/benchmarks/bare_window"))
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
    parser.add_argument("--display", help="X display such as :61; a free one by default")
    parser.add_argument("--json", type=Path, default=ROOT / "build/bench/first_paint.json")
    options = parser.parse_args()
    if options.quick:
        options.pairs, options.rests, options.settle, options.idle = 3, 1, 5, 10
    return options


def run(options: argparse.Namespace, folder: Path) -> dict:
    known = [quillox(options.quillox), bare(options.bare), chromium(options.chromium)]
    clients = [client for client in known if client.name not in options.skip]
    with Stage(options.site, options.display) as stage:
        bench = Bench(stage, clients, folder)
        before = machine()
        # The first run of a profile fills its caches and is not counted.
        bench.rounds(1, bench.first_paint, "warm-up, discarded")
        paints = bench.rounds(options.pairs, bench.first_paint, "first paint s")
        rests = bench.rounds(options.rests,
                             lambda one: bench.at_rest(one, options.settle, options.idle),
                             "MiB/processes/CPU s/switches")
    return {"machine": before, "quick": options.quick, "countdown_subtracted": COUNTDOWN_SECONDS,
            "clients": summary(clients, paints, rests), "reaches": reaches(paints, rests),
            "rounds": {"first_paint": paints, "at_rest": rests}}


def main() -> int:
    options = arguments()
    adopt_orphans()
    with tempfile.TemporaryDirectory(prefix="quillox-bench-") as folder:
        try:
            result = run(options, Path(folder))
        except (ClientFailed, OSError, RuntimeError) as error:
            print(f"first_paint: {error}", file=sys.stderr)
            return 1
    options.json.parent.mkdir(parents=True, exist_ok=True)
    options.json.write_text(json.dumps(result, indent=2) + "\n")
    print(report(result))
    print(f"\n{options.json}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
