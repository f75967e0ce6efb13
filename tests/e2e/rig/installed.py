"""The program as its package puts it down, in a folder of the test's own."""

import re
from pathlib import Path

from .home import needs

NAME_THE_PROGRAM = ("lib/quillox/session", "lib/systemd/user/*.service", "share/*sessions/*.desktop")


def install(bed):
    """Installs the build that the bed's program is of; returns the folder."""
    needs("cmake")
    build = Path(bed.binary).parent
    configured = re.search(r"^CMAKE_INSTALL_PREFIX:PATH=(.*)$", (build / "CMakeCache.txt").read_text(), re.M)[1]
    prefix = bed.home.subfolder("installed")
    bed.home.run("cmake", "--install", build, "--prefix", prefix)
    # They name the program by its whole path, which is chosen when a build is configured.
    for pattern in NAME_THE_PROGRAM:
        for file in prefix.glob(pattern):
            file.write_text(re.sub(rf"{re.escape(configured)}/(bin|lib)/", rf"{prefix}/\1/", file.read_text()))
    prefix.chmod(0o755)
    return prefix
