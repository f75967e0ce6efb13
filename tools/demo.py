"""Seals the bundled demo site on a private X server and saves a picture of the screen."""

import contextlib
import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

PROJECT = pathlib.Path(__file__).resolve().parent.parent
SITE = PROJECT / "resources" / "demo-site"
PICTURE = PROJECT / "build" / "demo.png"
SIZE = "1920x1080"
PATIENCE = 60  # seconds


@contextlib.contextmanager
def process(*command, **options):
    started = subprocess.Popen(command, **options)
    try:
        yield started
    finally:
        started.terminate()
        started.wait()


@contextlib.contextmanager
def display():
    """A private X server; yields its name."""
    reading, writing = os.pipe()
    with process("Xvfb", "-displayfd", str(writing), "-screen", "0", f"{SIZE}x24", "-nolisten", "tcp",
                 pass_fds=[writing], stderr=subprocess.DEVNULL):
        os.close(writing)
        with os.fdopen(reading) as answer:
            yield ":" + answer.readline().strip()


def page_color():
    """What the site's style sheet paints its pages with."""
    return re.search(r"--paper: (#\w+);", (SITE / "style.css").read_text())[1].upper()


def corner_colors(environment):
    """The colours of the leftmost pixels at the top and at the bottom of the screen."""
    picture = subprocess.run(["import", "-window", "root", "-depth", "8", "txt:-"], env=environment,
                             capture_output=True, text=True).stdout.splitlines()
    first_column = [line for line in picture if line.startswith("0,")]
    return {re.search(r"#\w{6}", line)[0] for line in (first_column[0], first_column[-1])}


def main(program):
    with tempfile.TemporaryDirectory() as home, display() as name:
        runtime = pathlib.Path(home, "run")
        runtime.mkdir(mode=0o700)
        environment = dict(os.environ, DISPLAY=name, HOME=home, XDG_RUNTIME_DIR=str(runtime),
                           XDG_CONFIG_HOME=f"{home}/config", XDG_DATA_HOME=f"{home}/data",
                           XDG_CACHE_HOME=f"{home}/cache")
        defaults = pathlib.Path(home, "config", "Quillox", "defaults.json")
        defaults.parent.mkdir(parents=True)
        defaults.write_text(json.dumps({"hasOnboarded": True, "kioskSettings": {
            "sourceKind": "local", "localPath": str(SITE), "autoStartKiosk": True}}))
        print(f"No display here: sealing the demo site on a private X server of {SIZE} pixels …", flush=True)
        with process("openbox", env=environment), process(program, env=environment) as running:
            deadline = time.monotonic() + PATIENCE
            while corner_colors(environment) != {page_color()}:
                if running.poll() is not None or time.monotonic() > deadline:
                    sys.exit("The demo site did not appear.")
                time.sleep(0.2)
            subprocess.run(["import", "-window", "root", PICTURE], env=environment, check=True)
    print(f"Sealed. The picture of the screen is {PICTURE}")


if __name__ == "__main__":
    main(str(pathlib.Path(sys.argv[1]).resolve()))
