"""Many runs in one process leave nothing behind."""

import os

import pytest
from rig.processes import anonymous_memory, descendants, status
from rig.waiting import wait_for

SANITIZED = os.environ.get("QUILLOX_SANITIZED") == "1"
RUNS, WARM = 50, 10
GROWTH = 8 * 1024  # KiB between the warm run and the last one


@pytest.mark.on("openbox")
def test_many_runs_leave_nothing_behind(bed):
    before = set(bed.home.processes())
    bed.settings(url=bed.site.url)
    bed.start()
    for run in range(1, RUNS + 1):
        bed.seal()
        bed.unseal()
        if run == WARM:
            warm = settled(bed)
    last = wait_for("the same windows and processes as before", lambda: (
        now if (now := settled(bed))["kept"] == warm["kept"] else None))

    print(f"after {WARM} runs: {warm}; after {RUNS}: {last}")
    assert last["threads"] <= warm["threads"] + 2
    if not SANITIZED:
        assert last["resident"] <= warm["resident"] + GROWTH
        assert last["anonymous"] <= warm["anonymous"] + GROWTH
    bed.close()
    wait_for("end of all processes", lambda: set(bed.home.processes()) == before)


def settled(bed):
    """What the program holds, once what a run used has gone."""
    def engine_idle():
        return sum(name.startswith("WebKitWeb") for name in descendants(bed.process.pid).values()) <= 1
    wait_for("end of the run's page process", engine_idle)
    pid = bed.process.pid
    children = descendants(pid)
    return {"kept": (len(bed.display.all_windows()), sorted(children.values())),
            "threads": status(pid, "Threads"), "resident": status(pid, "VmRSS"),
            "anonymous": anonymous_memory([pid, *children])}
