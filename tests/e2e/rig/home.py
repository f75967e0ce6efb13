"""A private home in a temporary folder, and every process that was started in it."""

import os
import shutil
import signal
import subprocess
import tempfile
from contextlib import suppress
from pathlib import Path

import pytest

from .waiting import wait_for

ORDINARY_USER = 65534
DIES_WITH_US = ("setpriv", "--pdeathsig=KILL")  # though the tests be killed; followed by a command


def needs(*programs):
    """Skips the test on a machine that lacks one of the programs."""
    missing = [program for program in programs if not shutil.which(program)]
    if missing:
        pytest.skip(f"needs {', '.join(missing)}: see packaging/packages/test.txt")


def as_ordinary_user(folder):
    """The words that start a program which refuses to run as root; the folder becomes its own."""
    if os.geteuid() != 0:
        return []
    for path in (folder, *folder.rglob("*")):
        os.chown(path, ORDINARY_USER, ORDINARY_USER)
    return [*DIES_WITH_US, f"--reuid={ORDINARY_USER}", f"--regid={ORDINARY_USER}", "--clear-groups"]


class Home:
    def __init__(self):
        self.folder = Path(tempfile.mkdtemp(prefix="quillox-e2e-"))
        self.folder.chmod(0o711)
        self.environment = {
            "PATH": os.environ["PATH"],
            "LANG": "C.UTF-8",
            "HOME": str(self.folder),
            "QUILLOX_E2E_HOME": str(self.folder),
            "DBUS_SESSION_BUS_ADDRESS": "disabled:",
            "NO_AT_BRIDGE": "1",
        }
        for name in ("RUNTIME_DIR", "CONFIG_HOME", "DATA_HOME", "STATE_HOME", "CACHE_HOME"):
            self.environment["XDG_" + name] = str(self.subfolder(name.lower()))
        self.logs = self.subfolder("logs")
        self._started = []

    def subfolder(self, name):
        path = self.folder / name
        path.mkdir(mode=0o700)
        return path

    def start(self, *command, **options):
        """Starts a program with its output in `logs`; `log` and `environment` may be given."""
        environment = {**self.environment, **options.pop("environment", {})}
        log = options.pop("log", None) or f"{len(self._started):02}-{Path(command[0]).name}"
        with open(self.logs / log, "ab") as output:
            process = subprocess.Popen(
                [*DIES_WITH_US, *map(str, command)],
                env={name: value for name, value in environment.items() if value is not None},
                stdin=subprocess.DEVNULL, stdout=options.pop("stdout", output), stderr=output,
                start_new_session=True, **options)
        self._started.append(process)
        return process

    def session_bus(self):
        """Starts a session bus; returns its address."""
        needs("dbus-daemon")
        bus = self.start("dbus-daemon", "--session", "--nofork", "--print-address", stdout=subprocess.PIPE, text=True)
        return bus.stdout.readline().strip()

    def run(self, *command, environment=None):
        """The output of a program that must succeed."""
        return subprocess.run([str(word) for word in command], check=True, capture_output=True, timeout=60,
                              env={**self.environment, **(environment or {})}).stdout

    def processes(self):
        """Every living process of this home, also those that left their parents."""
        mark = f"QUILLOX_E2E_HOME={self.folder}\0".encode()
        for entry in Path("/proc").iterdir():
            with suppress(OSError):  # It ended meanwhile, or belongs to somebody else.
                if entry.name.isdigit() and mark in (entry / "environ").read_bytes():
                    yield int(entry.name)

    def end(self):
        for process in reversed(self._started):
            if process.poll() is None:
                os.killpg(process.pid, signal.SIGKILL)
            process.wait()
        wait_for("end of all processes", self._killed)
        shutil.rmtree(self.folder, ignore_errors=True)

    def _killed(self):
        left = list(self.processes())
        for pid in left:
            with suppress(ProcessLookupError):
                os.kill(pid, signal.SIGKILL)
        return not left
