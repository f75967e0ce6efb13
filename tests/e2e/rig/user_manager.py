"""A real service manager of a user, confined, in whose session the program may be."""

import fcntl
import shlex
import subprocess
from contextlib import suppress
from pathlib import Path

import pytest

from .processes import descendants
from .waiting import wait_for

BESIDE = Path(__file__).parents[2] / "contract/beside-user-manager.sh"
UNIT = "com.orvendal.quillox.watchdog.service"
USER = 4242
HOME = "/mnt/home"
CONFIGURATION = f"{HOME}/.config"
DESKTOP = "[Unit]\nBindsTo=graphical-session.target\n"
QUICK = "[Service]\nWatchdogSec=5s\n"  # Nobody has time to wait.


class UserManager:
    """Ends with `end`, which waits until everything of it is gone."""

    def __init__(self, bed):
        self._home = bed.home
        # What is confined lasts as long as the lock, which goes with the tests though they be killed.
        self._lasting = open(bed.home.folder / "lasting", "w")
        fcntl.flock(self._lasting, fcntl.LOCK_EX)
        script = bed.home.folder / "beside-manager"
        script.write_text(f"#!/bin/sh\nexec flock {self._lasting.name} true\n")
        script.chmod(0o755)
        folders = dict.fromkeys(name for name in bed.home.environment if name.startswith("XDG_"))
        self._process = bed.home.start("sh", BESIDE, script, "-", bed.defaults, log="manager", environment=folders)
        self._inside = wait_for("service manager", self._find)
        for path, text in ((f"{CONFIGURATION}/systemd/user/desktop.target", DESKTOP),
                           (f"{CONFIGURATION}/systemd/user/{UNIT}.d/quick.conf", QUICK),
                           (f"{CONFIGURATION}/Quillox/defaults.json", bed.defaults.read_text())):
            self.run("sh", "-c", f"mkdir -p {Path(path).parent} && printf %s {shlex.quote(text)} >{path}")
        variables = {name: value for name, value in (bed.home.environment | bed.display.environment).items()
                     if not name.startswith(("XDG_", "DBUS_", "HOME", "ASAN", "LSAN", "UBSAN"))}
        self.systemctl("set-environment", *(f"{name}={value}" for name, value in variables.items()))
        self._variables = variables

    def _find(self):
        if self._process.poll() == 77:
            pytest.skip((self._home.logs / "manager").read_text())
        assert self._process.poll() is None, (self._home.logs / "manager").read_text()
        return next((pid for pid, name in descendants(self._process.pid).items() if name == "flock"), None)

    def command(self, *words, variables=()):
        """The words that start a program beside the manager, as its user."""
        entered = ("nsenter", f"--target={self._inside}", "--mount", "--pid", "--cgroup")
        user = ("setpriv", f"--reuid={USER}", f"--regid={USER}", "--clear-groups")
        environment = (f"HOME={HOME}", "XDG_RUNTIME_DIR=/mnt/run", *variables)
        own = ("PATH", "LANG")
        kept = (f"{name}={self._home.environment[name]}" for name in own)
        return *entered, *user, "env", "-i", "-C", HOME, *kept, *environment, *words

    def run(self, *words):
        return self._home.run(*self.command(*words)).decode().strip()

    def systemctl(self, *words):
        return self.run("systemctl", "--user", *words)

    def start(self, program, log):
        """Starts a program in the session that the manager does not know of."""
        return self._home.start(*self.command(program, variables=[
            f"{name}={value}" for name, value in self._variables.items()]), log=log)

    def begin_session(self):
        self.systemctl("daemon-reload")
        self.systemctl("start", "desktop.target")

    def end_session(self):
        self.systemctl("stop", "graphical-session.target", "desktop.target")

    def is_enabled(self):
        with suppress(subprocess.CalledProcessError):
            return self.systemctl("is-enabled", UNIT) == "enabled"
        return False

    def state(self):
        return self.systemctl("show", "--property=SubState", "--value", UNIT)

    def log(self):
        return (self._home.logs / "manager").read_text(errors="replace")

    def end(self):
        self._lasting.close()
        self._process.wait(timeout=30)
