#!/usr/bin/python3
"""Installs a build into an empty folder and looks at the result as a package's users would.

Usage: check_installation.py BUILD_FOLDER PREFIX"""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

MUST_BE_THERE = [
    "bin/quillox",
    "lib/quillox/session",
    "lib/systemd/user/com.orvendal.quillox.watchdog.service",
    "share/applications/com.orvendal.quillox.desktop",
    "share/doc/quillox/copyright",
    "share/icons/hicolor/scalable/apps/com.orvendal.quillox.svg",
    "share/man/man1/quillox.1.gz",
    "share/metainfo/com.orvendal.quillox.metainfo.xml",
    "share/quillox/setup-guide/index.html",
    "share/wayland-sessions/quillox-wayland.desktop",
    "share/xsessions/quillox-x11.desktop",
]
CHECKS = [
    (["desktop-file-validate"], "share/applications/com.orvendal.quillox.desktop"),
    (["appstreamcli", "validate", "--no-net"], "share/metainfo/com.orvendal.quillox.metainfo.xml"),
    (["sh", "-n"], "lib/quillox/session"),
    (["man", "--warnings", "-l"], "share/man/man1/quillox.1.gz"),
]


def run(words, **options):
    return subprocess.run(words, capture_output=True, text=True, timeout=50, check=False, **options)


def lines_with(file, start):
    return [line[len(start):] for line in file.read_text().splitlines() if line.startswith(start)]


def complaints(root, prefix):
    installed = root / prefix.lstrip("/")
    yield from (f"{name} is missing" for name in MUST_BE_THERE if not (installed / name).is_file())
    for module in ["libquillox-engine.so", "libquillox-updates.so",
                   "web-extensions/libquillox-web-extension.so"]:
        if len(list(installed.glob(f"lib/*/quillox/{module}"))) != 1:
            yield f"{module} is not where the program looks for it"

    version = run([installed / "bin/quillox", "--version"])
    if version.returncode != 0 or not version.stdout.startswith("Quillox "):
        yield f"the installed program does not start: {version.stderr}"

    named = lines_with(installed / MUST_BE_THERE[2], "ExecStart=")
    for session in installed.glob("share/*sessions/quillox-*.desktop"):
        named += lines_with(session, "Exec=")
    for command in named:
        program = command.lstrip(":").split()[0].strip('"')
        if not os.access(root / program.lstrip("/"), os.X_OK):
            yield f"{command} names no installed program"

    manual = run(["man", "-l", installed / "share/man/man1/quillox.1.gz"],
                 env={**os.environ, "MANWIDTH": "200", "LC_ALL": "C.UTF-8"}).stdout
    settings = run([installed / "bin/quillox", "config", "--help"]).stdout.split("Settings:\n")[1]
    for line in settings.split("\n\n")[0].splitlines():
        if line.split()[0] not in manual:
            yield f"the manual page does not know {line.split()[0]}"

    for checker, name in CHECKS:
        if shutil.which(checker[0]):
            result = run([*checker, installed / name])
            if result.returncode or (checker[0] == "man" and result.stderr):
                yield f"{' '.join(checker)} {name}: {result.stdout}{result.stderr}"


def main(build, prefix):
    with tempfile.TemporaryDirectory(prefix="quillox-installation-") as folder:
        result = run(["cmake", "--install", build], env={**os.environ, "DESTDIR": folder})
        if result.returncode:
            sys.exit(result.stderr)
        found = list(complaints(pathlib.Path(folder), prefix))
    print("\n".join(found) or "nothing to complain about")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
