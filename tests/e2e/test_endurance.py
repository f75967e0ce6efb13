"""Many runs in one process leave nothing behind."""

import math
import os
from collections import Counter

import pytest
from rig.processes import anonymous_memory, descendants, status
from rig.waiting import wait_for

SANITIZED = os.environ.get("QUILLOX_SANITIZED") == "1"
RUNS, WARM = (20 if SANITIZED else 50), 10
GROWTH = 8 * 1024  # KiB between the warm run and the last one


@pytest.mark.on("openbox")
def test_many_runs_leave_nothing_behind(bed):
    before = set(bed.home.processes())
    bed.settings(url=bed.site.url)
    bed.start()
    for run in range(1, RUNS + 1):
        bed.seal()
        if run == WARM:
            most = processes(bed)
        bed.unseal()
        if run == WARM:
            warm = settled(bed, most)
    last = settled(bed, most, warm["windows"])

    print(f"after {WARM} runs: {warm}; after {RUNS}: {last}")
    assert last["threads"] <= warm["threads"] + 2
    if not SANITIZED:
        assert last["resident"] <= warm["resident"] + GROWTH
        assert last["anonymous"] <= warm["anonymous"] + GROWTH
    bed.close()
    wait_for("end of all processes", lambda: set(bed.home.processes()) == before)


def processes(bed):
    return Counter(descendants(bed.process.pid).values())


def settled(bed, most_processes, most_windows=math.inf):
    """What the program holds. The engine may keep the page's process for the next run, or end it."""
    pid = bed.process.pid
    seen = []

    def has_no_more():
        seen[:] = len(bed.display.all_windows()), processes(bed)
        return seen[0] <= most_windows and seen[1] <= most_processes
    try:
        wait_for("end of what the runs used", has_no_more)
    finally:
        print(f"windows and processes: {seen}; at most: {most_windows}, {most_processes}")
    return {"windows": seen[0], "threads": status(pid, "Threads"), "resident": status(pid, "VmRSS"),
            "anonymous": anonymous_memory([pid, *descendants(pid)])}
