#!/usr/bin/python3
"""The held gesture that unseals, with real keys on the real program: how long it takes, and how
many of its indicator's frames reach the screen, beside a bare window that animates a bar over the
same page. README.md says how to read the result."""

import argparse
import contextlib
import select
import statistics
import sys
import time
from collections.abc import Callable
from pathlib import Path

from Xlib import X
from Xlib.display import Display
from Xlib.ext import damage

from clients import (ROOT, Client, ClientFailed, Launcher, add_common_arguments, in_rounds, machine,
                     quillox, reach, reach_lines, run_and_report)
from keyboard import Keyboard, activate_window, full_screen_windows
from stage import HEIGHT, WIDTH, Stage

GESTURE = ("Super_L", "Shift_L", "s")
SEAL_SECONDS = 1.3  # More than the gesture takes; the run begins when its keys go up.
DEADLINE_SECONDS = 15
FRAME_SECONDS = 1 / 60
BAR_WIDTH = 220
SEARCH_AREA = (WIDTH // 2 - BAR_WIDTH, HEIGHT // 2 - 150, 2 * BAR_WIDTH, 300)
# So much of a bar, in pixels, that nothing else of the indicator is as long a run of white.
TELLING_RUN = 60
WHITE = b"\xff\xff\xff"


class Bar:
    """The bar's pixels on the screen, read each time that the server reports them drawn."""

    def __init__(self, display: Display):
        self.display = display
        self.root = display.screen().root
        display.damage_query_version()
        self.place: tuple[int, int] | None = None

    def image(self, x: int, y: int, width: int, height: int) -> bytes:
        return self.root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data

    def find(self) -> bool:
        """Looks for the bar while a part of it is filled."""
        left, top, width, height = SEARCH_AREA
        pixels = self.image(*SEARCH_AREA)
        colours = [pixels[at:at + 3] for at in range(0, 4 * width * height, 4)]
        for row in range(height):
            line = colours[row * width:(row + 1) * width]
            start = next((x for x in range(width) if line[x] == WHITE), width)
            if line[start:start + TELLING_RUN] == [WHITE] * TELLING_RUN:
                # The middle of its height is clear of rounded or smoothed edges.
                self.place = (left + start, top + row + 4)
                return True
        return False

    def row(self) -> bytes | None:
        """The bar's middle row; none while it does not show."""
        pixels = self.image(*self.place, BAR_WIDTH, 1)
        return pixels if pixels[:3] == WHITE else None

    def watch(self, window: int) -> None:
        """Has the server report what is drawn in the window, until it or the connection goes."""
        self.display.create_resource_object("window", window).damage_create(
            damage.DamageReportRawRectangles)


class Frames:
    """The moments at which the bar was drawn different from before, by the server's clock."""

    def __init__(self, bar: Bar):
        self.bar = bar
        self.moments: list[float] = []
        self.last: bytes | None = None

    def look(self, drawn: float) -> None:
        row = self.bar.row()
        if row is not None and row != self.last:
            self.moments.append(drawn)
            self.last = row

    def figures(self) -> dict[str, float]:
        if len(self.moments) < 2:
            raise ClientFailed("the bar does not move")
        gaps = [after - before for before, after in zip(self.moments, self.moments[1:])]
        return {"rate": len(gaps) / sum(gaps),
                "dropped": sum(max(round(gap / FRAME_SECONDS) - 1, 0) for gap in gaps),
                "longest_ms": max(gaps) * 1e3}


class Holds(Launcher):
    def __init__(self, stage: Stage, folder: Path, holds: int):
        super().__init__(stage, folder)
        self.holds = holds
        self.durations: list[float] = []
        self.frames: dict[str, list[dict[str, float]]] = {}

    def round(self, client: Client) -> dict[str, float]:
        with self.showing(client), contextlib.closing(Display(self.stage.display)) as display:
            display.screen().root.change_attributes(event_mask=X.SubstructureNotifyMask)
            bar = Bar(display)
            watch = self.unseals if client.name == "quillox" else self.seconds
            watched = watch(display, bar)
        self.frames.setdefault(client.name, []).extend(watched)
        return {figure: statistics.median(one[figure] for one in watched)
                for figure in ("rate", "dropped", "longest_ms")}

    def seconds(self, display: Display, bar: Bar) -> list[dict[str, float]]:
        """A second each of the bar that never rests."""
        self.await_that("the bar", bar.find)
        bar.watch(max(display.screen().root.query_tree().children, key=self.area).id)
        watched = []
        for _ in range(self.holds):
            frames = Frames(bar)
            end = time.monotonic() + 1
            while time.monotonic() < end:
                if drawn := self.drawn(display, end, []):
                    frames.look(drawn)
            watched.append(frames.figures())
        return watched

    @staticmethod
    def area(window) -> int:
        place, attributes = window.get_geometry(), window.get_attributes()
        return place.width * place.height if attributes.map_state == X.IsViewable else 0

    def unseals(self, display: Display, bar: Bar) -> list[dict[str, float]]:
        keyboard = Keyboard(display)
        self.find_bar_of_hold(keyboard, bar)
        watched = []
        for number in range(self.holds):
            if number > 0:
                self.seal(display, keyboard)
            time.sleep(0.7)  # The page comes to rest.
            duration, frames = self.unseal(display, keyboard, bar)
            self.durations.append(duration)
            watched.append(frames)
        return watched

    def find_bar_of_hold(self, keyboard: Keyboard, bar: Bar) -> None:
        """By a hold that is given up after two thirds."""
        for _ in range(3):
            with keyboard.hold(*GESTURE) as start:
                while time.monotonic() < start + 0.65:
                    if bar.find():
                        break
            if bar.place:
                return
        raise ClientFailed("no indicator of the hold shows")

    def unseal(self, display: Display, keyboard: Keyboard,
               bar: Bar) -> tuple[float, dict[str, float]]:
        """Seconds from the press of S until the sealed window is gone."""
        sealed = full_screen_windows(display, WIDTH, HEIGHT)
        if len(sealed) != 1:
            raise ClientFailed(f"{len(sealed)} windows seal the screen")
        window = sealed.pop()
        frames = Frames(bar)
        bar.watch(window)
        with keyboard.hold(*GESTURE) as start:
            deadline = start + DEADLINE_SECONDS
            while time.monotonic() < deadline:
                if drawn := self.drawn(display, deadline, gone := []):
                    frames.look(drawn)
                if any(event.window.id == window for event in gone):
                    return time.monotonic() - start, frames.figures()
        raise ClientFailed("the gesture did not unseal")

    def seal(self, display: Display, keyboard: Keyboard) -> None:
        self.await_that("the setup window", lambda: activate_window(display, "Quillox"))
        self.await_no_page()

        def hold() -> bool:
            with keyboard.hold(*GESTURE):
                time.sleep(SEAL_SECONDS)
            return self.comes_true(self.stage.shows_page, 3)

        self.await_that("the sealed page", hold)

    @staticmethod
    def drawn(display: Display, deadline: float, gone: list) -> float | None:
        """Waits for events, and takes all. The second on the server's clock at which something was
        last drawn in the watched window; the events of windows that went are added to `gone`."""
        left = max(deadline - time.monotonic(), 0)
        if not display.pending_events() and not select.select([display.fileno()], [], [], left)[0]:
            return None
        latest = None
        while display.pending_events():
            event = display.next_event()
            if event.type == display.extension_event.DamageNotify:
                latest = event.timestamp / 1e3
            elif event.type in (X.UnmapNotify, X.DestroyNotify):
                gone.append(event)
        return latest

    @staticmethod
    def comes_true(condition: Callable[[], bool], seconds: float) -> bool:
        deadline = time.monotonic() + seconds
        while not (is_true := condition()) and time.monotonic() < deadline:
            time.sleep(0.02)
        return is_true

    def await_that(self, what: str, condition: Callable[[], bool]) -> None:
        if not self.comes_true(condition, DEADLINE_SECONDS):
            raise ClientFailed(f"{what} did not come")


def bare_with_bar(program: str) -> Client:
    return Client("bare", lambda profile, address: [program, address, "--bar"])


def summary(frames: list[dict[str, float]]) -> dict[str, float]:
    return {"seconds": len(frames), "rate": statistics.median(one["rate"] for one in frames),
            "dropped": sum(one["dropped"] for one in frames),
            "longest_ms": max(one["longest_ms"] for one in frames)}


def report(result: dict) -> str:
    hold = result["hold"]
    lines = ["", f"hold to unsealed, s: median {hold['median']:.4f}, {hold['shortest']:.4f} to "
                 f"{hold['longest']:.4f} in {hold['count']} holds", "",
             f"{'frames of the bar':<20}{'times':>7}{'a second':>10}{'dropped':>9}"
             f"{'longest ms':>12}"]
    for name, row in result["frames"].items():
        lines.append(f"{name:<20}{row['seconds']:>7}{row['rate']:>10.2f}{row['dropped']:>9}"
                     f"{row['longest_ms']:>12.1f}")
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def run(options: argparse.Namespace, folder: Path) -> dict:
    clients = [quillox(options.quillox), bare_with_bar(options.bare)]
    with Stage(options.site, options.display) as stage:
        holds = Holds(stage, folder, options.holds)
        before = machine()
        in_rounds(clients, options.rounds, holds.round, "frames/s, dropped, longest ms")
    frames = {name: summary(watched) for name, watched in holds.frames.items()}
    ratio = frames["quillox"]["rate"] / frames["bare"]["rate"]
    shortest, longest = min(holds.durations), max(holds.durations)
    return {"machine": before, "frames": frames,
            "hold": {"count": len(holds.durations), "median": statistics.median(holds.durations),
                     "shortest": shortest, "longest": longest},
            "reaches": [reach("longest hold, s", longest, "<=", 1.05),
                        reach("shortest hold, s", shortest, ">=", 1.00),
                        reach("dropped frames, quillox", frames["quillox"]["dropped"], "<=", 0),
                        reach("frames a second, quillox / bare", ratio, ">=", 0.98)],
            "durations": holds.durations, "every_second": holds.frames}


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "hold_timing")
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--rounds", type=int, default=4)
    parser.add_argument("--holds", type=int, default=5, help="holds a round")
    return parser.parse_args()


if __name__ == "__main__":
    options = arguments()
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
