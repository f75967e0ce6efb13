"""What a client and everything it started cost, read from /proc.

A client is every descendant of this process but the stage's own helpers. That holds for engines
that sandbox and orphan their children, because this process makes itself the reaper of its orphans.
"""

import contextlib
import ctypes
import os
import signal
import subprocess
import time
from dataclasses import dataclass, field

PR_SET_CHILD_SUBREAPER = 36


def adopt_orphans() -> None:
    """Makes this process, also after an exec, the parent of every orphan below it."""
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) != 0:
        raise OSError(ctypes.get_errno(), "prctl(PR_SET_CHILD_SUBREAPER)")


def read(path: str) -> str | None:
    """The file's text, or none when its process or thread has gone."""
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            return file.read()
    except (FileNotFoundError, ProcessLookupError):
        return None


def stat_fields(path: str) -> list[str] | None:
    """The fields of a stat file after the name, which may hold spaces and brackets."""
    text = read(path)
    return text.rpartition(")")[2].split() if text else None


def client_processes(helpers: set[int]) -> set[int]:
    """The live processes below this one, without `helpers` and what is below them. A child that is
    orphaned during the look can be missing from it."""
    children: dict[int, list[int]] = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit() and (stat := stat_fields(f"/proc/{entry}/stat")) and stat[0] != "Z":
            children.setdefault(int(stat[1]), []).append(int(entry))
    found: set[int] = set()
    pending = [child for child in children.get(os.getpid(), []) if child not in helpers]
    while pending:
        process = pending.pop()
        found.add(process)
        pending += children.get(process, [])
    return found


def proportional_set_size(processes: set[int]) -> float:
    """MiB. Raises PermissionError rather than leave out a process that may not be read."""
    kib = 0
    for process in processes:
        for line in (read(f"/proc/{process}/smaps_rollup") or "").splitlines():
            if line.startswith("Pss:"):
                kib += int(line.split()[1])
    return kib / 1024


@dataclass
class ThreadUse:
    """One thread's counters since the window opened."""

    first: tuple[int, int]
    last: tuple[int, int]


@dataclass
class IdleWatch:
    """Processor time and context switches of a tree over a time. A thread that ends in it counts up
    to its last sample; one that begins in it counts whole."""

    helpers: set[int]
    threads: dict[tuple[str, str], ThreadUse] = field(default_factory=dict)

    def watch(self, seconds: float, step: float = 1.0) -> tuple[float, int]:
        """CPU seconds, and voluntary plus involuntary context switches."""
        end = time.monotonic() + seconds
        self.sample(opening=True)
        while (left := end - time.monotonic()) > 0:
            time.sleep(min(step, left))
            self.sample(opening=False)
        used = self.threads.values()
        nanoseconds = sum(use.last[0] - use.first[0] for use in used)
        return nanoseconds / 1e9, sum(use.last[1] - use.first[1] for use in used)

    def sample(self, opening: bool) -> None:
        for process in client_processes(self.helpers):
            tasks = f"/proc/{process}/task"
            try:
                names = os.listdir(tasks)
            except (FileNotFoundError, ProcessLookupError):
                continue
            for name in names:
                self.sample_thread(f"{tasks}/{name}", opening)

    def sample_thread(self, task: str, opening: bool) -> None:
        stat, schedule = stat_fields(f"{task}/stat"), read(f"{task}/schedstat")
        status = read(f"{task}/status")
        if not stat or not schedule or not status:
            return
        switches = sum(int(line.split()[1]) for line in status.splitlines()
                       if "voluntary_ctxt_switches" in line)
        now = (int(schedule.split()[0]), switches)
        started = stat[19]
        use = self.threads.setdefault((task, started), ThreadUse(now if opening else (0, 0), now))
        use.last = now


def end_client(leader: subprocess.Popen, helpers: set[int], patience: float = 8.0) -> None:
    """Asks the client to end, and ends what is left of it after `patience` seconds."""
    leader.terminate()
    deadline = time.monotonic() + patience
    empty_looks = 0
    while empty_looks < 3:
        leader.poll()
        processes = client_processes(helpers)
        empty_looks = 0 if processes else empty_looks + 1
        for process in processes if time.monotonic() > deadline else ():
            with contextlib.suppress(ProcessLookupError):
                os.kill(process, signal.SIGKILL)
        time.sleep(0.05)
