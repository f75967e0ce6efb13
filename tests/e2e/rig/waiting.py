"""Waiting for conditions; no test waits for a fixed time."""

import time

DEADLINE = 30.0  # seconds; far beyond what a slow machine needs


def wait_for(what, condition, deadline=DEADLINE):
    """The condition's first truthy value; fails the test when it stays away."""
    end = time.monotonic() + deadline
    while True:
        value = condition()
        if value:
            return value
        assert time.monotonic() < end, f"{what}: not within {deadline:g} s"
        time.sleep(0.05)
