"""What the system says about processes."""

import re
from contextlib import suppress
from pathlib import Path


def descendants(pid):
    """Process ids and names of all that `pid` started, directly or not; zombies too."""
    children = {}
    for entry in Path("/proc").glob("[0-9]*/stat"):
        with suppress(OSError):
            number, name, parent = re.match(r"(\d+) \((.*)\) . (\d+)", entry.read_text(), re.S).groups()
            children.setdefault(int(parent), {})[int(number)] = name
    found, pending = {}, [pid]
    while pending:
        own = children.get(pending.pop(), {})
        found |= own
        pending += own
    return found


def status(pid, key, file="status"):
    """A number of /proc/PID/status, such as Threads, or VmRSS in KiB."""
    return int(re.search(rf"^{key}:\s+(\d+)", Path(f"/proc/{pid}/{file}").read_text(), re.M)[1])


def anonymous_memory(pids):
    """The memory in KiB that the processes share with none but one another."""
    total = 0
    for pid in pids:
        with suppress(OSError):
            total += status(pid, "Pss_Anon", "smaps_rollup")
    return total
