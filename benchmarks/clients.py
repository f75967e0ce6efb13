"""The programs that are compared, and how one is run until its page is on the screen."""

import argparse
import contextlib
import json
import operator
import os
import platform
import subprocess
import sys
import tempfile
import time
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from pathlib import Path

from process_tree import adopt_orphans, end_client
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


def quillox(program: str, name: str = "quillox", **source: str) -> Client:
    """Sealed on the stage's page, or on another source that the settings name."""
    def prepare(profile: Path, address: str) -> list[str]:
        defaults = profile / "config/Quillox/defaults.json"
        if not defaults.exists():
            defaults.parent.mkdir(parents=True)
            settings = {"url": address, "autoStartKiosk": True, "autoUpdate": False, **source}
            defaults.write_text(json.dumps({"hasOnboarded": True, "kioskSettings": settings}))
        return [program]

    return Client(name, prepare, COUNTDOWN_SECONDS)


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


class Launcher:
    """Runs clients on the stage, each with a profile of its own in the folder."""

    def __init__(self, stage: Stage, folder: Path):
        self.stage = stage
        self.folder = folder
        self.leader = 0  # The process of the client that is shown.

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
        try:
            with self.running(client) as (process, start):
                painted = self.await_page(process, start)
                if painted is None:
                    raise self.failure(client, process, "page")
                yield painted - start - client.prescribed_wait
        finally:
            self.await_no_page()

    @contextlib.contextmanager
    def running(self, client: Client) -> Iterator[tuple[subprocess.Popen, float]]:
        """The client's process, ended at last, and the moment just before its start."""
        profile = self.folder / client.name
        environment = self.environment(profile)
        command = client.prepare(profile, self.stage.address)
        with self.log(client).open("wb") as output:
            start = time.monotonic()
            process = subprocess.Popen(command, env=environment, stdin=subprocess.DEVNULL,
                                       stdout=output, stderr=output, start_new_session=True)
        self.leader = process.pid
        try:
            yield process, start
        finally:
            end_client(process, self.stage.helpers)

    def log(self, client: Client) -> Path:
        return self.folder / f"{client.name}.log"

    def failure(self, client: Client, process: subprocess.Popen, what: str) -> ClientFailed:
        return ClientFailed(f"{client.name} showed no {what} (exit {process.poll()}):\n"
                            f"{self.log(client).read_text(errors='replace')[-2000:]}")

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


Figures = dict[str, float]


def in_rounds(clients: list[Client], count: int, measure: Callable[[Client], Figures],
              title: str) -> list[dict[str, Figures]]:
    """Every client once a round, each round in the reverse order of the one before."""
    results = []
    for number in range(count):
        order = clients if number % 2 == 0 else clients[::-1]
        results.append({client.name: measure(client) for client in order})
        print(f"{title} {number + 1}/{count}: " + ", ".join(
            f"{name} " + "/".join(f"{value:.4g}" for value in results[-1][name].values())
            for name in sorted(results[-1])), file=sys.stderr, flush=True)
    return results


REACH_SIGNS = {"<": operator.lt, "<=": operator.le, ">=": operator.ge}


def reach(what: str, value: float, sign: str, limit: float) -> dict:
    return {"what": what, "value": value, "reach": f"{sign} {limit:g}",
            "met": REACH_SIGNS[sign](value, limit)}


def reach_lines(reaches: list[dict]) -> list[str]:
    return [f"{row['what']:<48}{row['value']:>10.3f}  reach {row['reach']:<8}"
            f"{'met' if row['met'] else 'MISSED'}" for row in reaches]


def run_and_report(options: argparse.Namespace, run: Callable[[Path], dict],
                   report: Callable[[dict], str]) -> int:
    """Runs a benchmark in a folder of its own; keeps its result, prints its report and gives the
    exit status."""
    adopt_orphans()
    with tempfile.TemporaryDirectory(prefix="quillox-bench-") as folder:
        try:
            result = run(Path(folder))
        except (ClientFailed, OSError, RuntimeError) as error:
            print(error, file=sys.stderr)
            return 1
    options.json.parent.mkdir(parents=True, exist_ok=True)
    options.json.write_text(json.dumps(result, indent=2) + "\n")
    print(report(result))
    print(f"\n{options.json}")
    return 0


def add_common_arguments(parser: argparse.ArgumentParser, name: str) -> None:
    parser.add_argument("--quillox", default=str(ROOT / "build/release/quillox"))
    parser.add_argument("--bare", default=str(ROOT / "build/bench/benchmarks/bare_window"))
    parser.add_argument("--display", help="X display such as :61; a free one by default")
    parser.add_argument("--json", type=Path, default=ROOT / f"build/bench/{name}.json")


def machine() -> dict:
    return {"kernel": platform.release(), "processors": os.cpu_count(),
            "load": os.getloadavg()[0], "root": os.geteuid() == 0,
            "gpu": any(Path("/dev/dri").glob("renderD*"))}
