#!/usr/bin/python3
"""How many frames of the operator screen reach the display a second, while it is scrolled by the
wheel and while the gesture is held. README.md says how to read the result."""

import argparse
import contextlib
import select
import sys
import time
from collections.abc import Callable, Iterator
from pathlib import Path

from Xlib import X
from Xlib.display import Display
from Xlib.ext import damage, xtest

from clients import (ROOT, ClientFailed, add_common_arguments, machine, reach, reach_lines,
                     run_and_report)
from keyboard import Keyboard
from setup_start import MIDDLE, Starts, setup
from stage import WIDTH, Stage

FRAME_SECONDS = 1 / 60
GESTURE = ("Super_L", "Shift_L", "s")
HOLD_SECONDS = 0.9  # Less than seals.
BANNER = 200, 80  # Pixels at the window's top, in its middle, where the hold's banner is.
STRIP_WIDTH = 64  # Of the content, as high as the window; its texts tell how far it is scrolled.
WHEEL = {"down": 5, "up": 4}
TICKS = 18  # Of the wheel; fewer than lead from one end of the screen to the other.
TICK_SECONDS = FRAME_SECONDS / 2  # No frame is without one.
REST_SECONDS = 0.3


class Strip:
    """A part of the window, and the moments at which the server was given a new picture of it. The
    toolkit sends only what differs from the frame before."""

    def __init__(self, display: Display, window: int, box: tuple[int, int, int, int]):
        self.display = display
        self.box = box
        display.damage_query_version()
        display.create_resource_object("window", window).damage_create(
            damage.DamageReportRawRectangles)

    def moments(self, until: float, meanwhile: Callable[[float], None]) -> list[float]:
        """By the server's clock, in seconds; `meanwhile` is called at least every millisecond."""
        found: list[float] = []
        list(self.drawn())  # What was before.
        while (now := time.monotonic()) < until:
            meanwhile(now)
            for moment in self.drawn():
                if not found or moment - found[-1] > FRAME_SECONDS / 4:  # A frame has many pieces.
                    found.append(moment)
        return found

    def drawn(self) -> Iterator[float]:
        if self.display.pending_events() or select.select([self.display.fileno()], [], [], 1e-3)[0]:
            while self.display.pending_events():
                event = self.display.next_event()
                if event.type == self.display.extension_event.DamageNotify and self.meets(event):
                    yield event.timestamp / 1e3

    def meets(self, event) -> bool:
        left, top, width, height = self.box
        area = event.area
        return (area.x < left + width and area.x + area.width > left
                and area.y < top + height and area.y + area.height > top)


def figures(moments: list[float]) -> dict[str, float]:
    if len(moments) < 2:
        raise ClientFailed("nothing moves")
    gaps = [after - before for before, after in zip(moments, moments[1:])]
    return {"frames": len(gaps), "seconds": sum(gaps), "longest_ms": max(gaps) * 1e3,
            "dropped": sum(max(round(gap / FRAME_SECONDS) - 1, 0) for gap in gaps)}


class Scene:
    def __init__(self, display: Display, window: int):
        self.display = display
        place = display.create_resource_object("window", window).get_geometry()
        corner = display.screen().root.translate_coords(window, 0, 0)
        left, top = corner.x, corner.y
        self.content = Strip(display, window, (48, 40, STRIP_WIDTH, place.height - 48))
        self.banner = Strip(display, window, ((place.width - BANNER[0]) // 2, 0, *BANNER))
        xtest.fake_input(display, X.MotionNotify, x=left + place.width // 2, y=top + 300)
        display.sync()

    def scroll(self, direction: str) -> dict[str, float]:
        ticks, due = TICKS, time.monotonic()

        def tick(now: float) -> None:
            nonlocal ticks, due
            while ticks > 0 and now >= due:
                for kind in X.ButtonPress, X.ButtonRelease:
                    xtest.fake_input(self.display, kind, WHEEL[direction])
                self.display.flush()
                ticks, due = ticks - 1, due + TICK_SECONDS
        # What the last ticks moved comes with the frame after them. Later ones fade the scroll bar.
        moments = self.content.moments(due + TICKS * TICK_SECONDS + FRAME_SECONDS, tick)
        time.sleep(REST_SECONDS)
        return figures(moments)

    def hold(self) -> dict[str, float]:
        with Keyboard(self.display).hold(*GESTURE) as start:
            return figures(self.banner.moments(start + HOLD_SECONDS, lambda _: None))


def watch(options: argparse.Namespace, stage: Stage, folder: Path) -> dict[str, list[dict]]:
    starts = Starts(stage, folder)
    watched: dict[str, list[dict]] = {"scroll": [], "hold": []}
    with starts.usable(setup(options.quillox)), contextlib.closing(
            Display(stage.display)) as display:
        scene = Scene(display, starts.active_window())
        time.sleep(1)  # The program prepares its engine.
        for _ in range(options.rounds):
            watched["scroll"] += [scene.scroll("down"), scene.scroll("up")]
            watched["hold"].append(scene.hold())
            time.sleep(REST_SECONDS)
    return watched


def summary(rows: list[dict]) -> dict[str, float]:
    return {"rate": sum(row["frames"] for row in rows) / sum(row["seconds"] for row in rows),
            "dropped": sum(row["dropped"] for row in rows),
            "longest_ms": max(row["longest_ms"] for row in rows),
            "seconds": sum(row["seconds"] for row in rows)}


def run(options: argparse.Namespace, folder: Path) -> dict:
    before = machine()
    with Stage(options.site, options.display) as stage:
        watched = watch(options, stage, folder)
    frames = {name: summary(rows) for name, rows in watched.items()}
    return {"machine": before, "frames": frames, "watched": watched,
            "reaches": [reach(f"frames a second, {name}", row["rate"], ">=", 59)
                        for name, row in frames.items()]}


def report(result: dict) -> str:
    lines = ["", f"{'':<12}{'frames/s':>10}{'dropped':>9}{'longest ms':>12}{'seconds':>9}"]
    for name, row in result["frames"].items():
        lines.append(f"{name:<12}{row['rate']:>10.2f}{row['dropped']:>9}{row['longest_ms']:>12.1f}"
                     f"{row['seconds']:>9.1f}")
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "setup_frames")
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--rounds", type=int, default=20)
    return parser.parse_args()


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
