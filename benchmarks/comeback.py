#!/usr/bin/python3
"""How long a display is without its sealed page after the program has crashed. README.md says how
to read the result."""

import argparse
import contextlib
import os
import signal
import sys
import time
from pathlib import Path

from clients import (POLL_SECONDS, ROOT, Client, ClientFailed, add_common_arguments, machine,
                     quillox, reach, reach_lines, run_and_report)
from process_tree import client_processes, read, stat_fields
from recovery import CountingStage, Recoveries, summary


class Comebacks(Recoveries):
    def crash(self, client: Client) -> float:
        """Seconds from the crash until the page of a new load shows."""
        with self.showing(client):
            before = self.await_that("page", self.stage.shown_load)
            program = self.program()
            start = time.monotonic()
            self.end(program)
            self.await_that("page again", lambda: self.shows_other(before))
            return time.monotonic() - start

    @staticmethod
    def end(program: int) -> None:
        """The engine handles the signal once; a real fault is there again afterwards."""
        with contextlib.suppress(ProcessLookupError):
            while (stat_fields(f"/proc/{program}/stat") or "Z")[0] != "Z":
                os.kill(program, signal.SIGSEGV)
                time.sleep(POLL_SECONDS)

    def program(self) -> int:
        """The process that the small parent keeps alive."""
        programs = [process for process in client_processes(self.stage.helpers)
                    if process != self.leader and read(f"/proc/{process}/comm") == "quillox\n"]
        if len(programs) != 1:
            raise ClientFailed(f"{len(programs)} programs to crash")
        return programs[0]


def kept_alive(program: str) -> Client:
    sealed = quillox(program)

    def prepare(profile: Path, address: str) -> list[str]:
        return [*sealed.prepare(profile, address), "--keep-alive"]

    return Client("kept", prepare, sealed.prescribed_wait)


def report(result: dict) -> str:
    row = result["back"]
    return "\n".join(["", "seconds from SIGSEGV to the sealed page, with the countdown: "
                      f"median {row['median']:.3f}, {row['shortest']:.3f} to {row['longest']:.3f}, "
                      f"{row['times']} times", "", *reach_lines(result["reaches"])])


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "comeback")
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--times", type=int, default=50)
    return parser.parse_args()


def run(options: argparse.Namespace, folder: Path) -> dict:
    before = machine()
    seconds = []
    with CountingStage(options.site, options.display) as stage:
        comebacks = Comebacks(stage, folder, options.times)
        for number in range(options.times):
            seconds.append(comebacks.crash(kept_alive(options.quillox)))
            print(f"crash {number + 1}/{options.times}: back after {seconds[-1]:.3f} s",
                  file=sys.stderr, flush=True)
    return {"machine": before, "back": summary(seconds), "everything": seconds,
            "reaches": [reach("crash to sealed page, longest, s", max(seconds), "<", 10)]}


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
