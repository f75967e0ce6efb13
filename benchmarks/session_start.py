#!/usr/bin/python3
"""How long a dedicated session takes from the log-in to the sealed page, beside a session of the
same compositor that shows a bare window. README.md says how to read the result."""

import argparse
import os
import re
import shutil
import statistics
import sys
from pathlib import Path

from clients import (COUNTDOWN_SECONDS, ROOT, Client, Launcher, add_common_arguments, bare,
                     in_rounds, machine, quillox, reach, reach_lines, run_and_report)
from stage import Stage

ORDINARY_USER = 65534  # Compositors are not for root.


class CompositorStage(Stage):
    """As large as the one output of a compositor that is nested in it."""

    size = 1024, 768
    has_window_manager = False


class Sessions(Launcher):
    def environment(self, profile: Path) -> dict[str, str]:
        """As a display manager gives it; the compositor is told where its output is."""
        inherited = super().environment(profile)
        for name in ("GDK_BACKEND", "DBUS_SESSION_BUS_ADDRESS"):
            del inherited[name]
        return {**inherited, "WLR_BACKENDS": "x11", "WLR_RENDERER": "pixman",
                "WLR_LIBINPUT_NO_DEVICES": "1"}

    def measure(self, client: Client) -> dict[str, float]:
        with self.showing(client) as seconds:
            return {"page": seconds}


def of_ordinary_user(client: Client) -> Client:
    def prepare(profile: Path, address: str) -> list[str]:
        command = client.prepare(profile, address)
        if os.geteuid() != 0:
            return command
        for path in (profile, *profile.rglob("*")):
            os.chown(path, ORDINARY_USER, ORDINARY_USER)
        return ["setpriv", f"--reuid={ORDINARY_USER}", f"--regid={ORDINARY_USER}", "--clear-groups",
                *command]
    return Client(client.name, prepare)


def session(program: str) -> Client:
    """The session's own script as the build has prepared it, for the program where it was built."""
    sealed = quillox(program)

    def prepare(profile: Path, address: str) -> list[str]:
        sealed.prepare(profile, address)
        text = (Path(program).parent / "packaging/session").read_text()
        script = profile / "session"
        script.write_text(re.sub(r'^program=.*$', f'program="{program}"', text, flags=re.M))
        script.chmod(0o755)
        return [str(script), "wayland"]
    return of_ordinary_user(Client("session", prepare))


def bare_session(program: str) -> Client:
    alone = bare(program)
    return of_ordinary_user(Client("bare", lambda profile, address: [
        "dbus-run-session", "--", "cage", "--", *alone.prepare(profile, address)]))


def column(rounds: list[dict], client: str) -> list[float]:
    return [one[client]["page"] for one in rounds]


def report(result: dict) -> str:
    lines = ["", f"{'log-in to page, s':<20}{'median':>10}{'least':>10}{'most':>10}"]
    for name, row in result["clients"].items():
        lines.append(f"{name:<20}" + "".join(f"{row[key]:>10.3f}" for key in row))
    return "\n".join([*lines, "", *reach_lines(result["reaches"])])


def run(options: argparse.Namespace, folder: Path) -> dict:
    folder.chmod(0o711)
    clients = [session(options.quillox), bare_session(options.bare)]
    with CompositorStage(options.site, options.display) as stage:
        sessions = Sessions(stage, folder)
        before = machine()
        in_rounds(clients, 1, sessions.measure, "warm-up, discarded")
        rounds = in_rounds(clients, options.rounds, sessions.measure, "page s")
    ratio = statistics.median(
        one["session"]["page"] / (one["bare"]["page"] + COUNTDOWN_SECONDS) for one in rounds)
    figures = {name: column(rounds, name) for name in ("session", "bare")}
    return {"machine": before, "rounds": rounds,
            "clients": {name: {"median": statistics.median(values), "min": min(values),
                               "max": max(values)} for name, values in figures.items()},
            "reaches": [reach("session / (bare + countdown)", ratio, "<=", 1.3)]}


def arguments() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description=__doc__)
    add_common_arguments(parser, "session_start")
    parser.add_argument("--site", type=Path, default=ROOT / "resources/demo-site")
    parser.add_argument("--rounds", type=int, default=9)
    return parser.parse_args()


if __name__ == "__main__":
    options = arguments()
    if not shutil.which("cage"):
        print("no figures: there is no cage", file=sys.stderr)
        sys.exit(0)
    sys.exit(run_and_report(options, lambda folder: run(options, folder), report))
