"""What the system says about processes."""

from pathlib import Path


def descendants(pid):
    """Process ids and names of all that `pid` started, directly or not; zombies too."""
    children = {}
    names = {}
    for entry in Path("/proc").glob("[0-9]*/stat"):
        try:
            head, _, tail = entry.read_text().rpartition(")")
        except OSError:
            continue
        number, _, name = head.partition(" (")
        names[int(number)] = name
        children.setdefault(int(tail.split()[1]), []).append(int(number))
    found = {}
    pending = [pid]
    while pending:
        for child in children.get(pending.pop(), []):
            found[child] = names[child]
            pending.append(child)
    return found


def status(pid, key):
    """A number of /proc/PID/status, such as Threads, or VmRSS in KiB."""
    for line in Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith(key + ":"):
            return int(line.split()[1])
    raise KeyError(key)


def proportional_memory(pids):
    """The memory in KiB that the processes take together, shared pages counted once."""
    total = 0
    for pid in pids:
        try:
            lines = Path(f"/proc/{pid}/smaps_rollup").read_text().splitlines()
        except OSError:
            continue
        total += next(int(line.split()[1]) for line in lines if line.startswith("Pss:"))
    return total
