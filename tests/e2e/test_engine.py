"""What there is without the web engine's module: an operator who is told, and no lock."""

import re
from pathlib import Path

import pytest
from rig.a11y import Screen
from rig.bed import ENGINE
from rig.waiting import wait_for


@pytest.fixture
def screen(bed):
    return Screen(bed)


def leave_out(program, module):
    module.unlink()


def exchange_for_no_module(program, module):
    module.write_bytes(b"\x7fELF no module")


def exchange_for_another_version(program, module):
    """Both hold the name of their build, which is nowhere else."""
    names = [set(re.findall(rb"(?<![0-9a-f])[0-9a-f]{64}(?![0-9a-f])", file.read_bytes())) for file in (program, module)]
    (name,) = names[0] & names[1]
    module.write_bytes(module.read_bytes().replace(name, name[::-1]))


@pytest.mark.on("openbox")
@pytest.mark.parametrize("spoil, says", [
    (leave_out, "is not installed"), (exchange_for_no_module, "file too short"),
    (exchange_for_another_version, "is of another version")])
def test_nothing_is_sealed_without_a_fitting_engine(bed, screen, spoil, says):
    program = Path(bed.copy_program(bed.home.subfolder("copy")))
    spoil(program, program.with_name(ENGINE))
    bed.binary = str(program)
    bed.start()
    screen.wait("The web engine is missing — kiosk not started")
    assert re.search(f"^Quillox: there is no web engine: .*{ENGINE}.*{says}", bed.log, re.M)
    assert not bed.display.sealed_windows(bed.process.pid)
    bed.display.press("Return")
    wait_for("setup with the keyboard", lambda: (now := screen.focused()) and now.role == "text box")
    bed.close()
