"""One copy of the program per session, whatever the session offers and however the first one is."""

import signal

import pytest
from rig.waiting import wait_for

LAUNCHES = 10


def launch_again(bed, **environment):
    """A second launch leaves at once, and the first shows its window."""
    bed.display.minimise_setup()
    assert bed.start(environment=environment).wait(timeout=10) == 0
    wait_for("activated setup window", bed.display.setup_window)
    assert bed.process.poll() is None


@pytest.fixture
def quiet(bed):
    """The program waits in its setup window."""
    bed.settings(url=bed.site.url)
    return bed


@pytest.mark.on("openbox")
@pytest.mark.parametrize("bus", ["session bus", "no bus", "bus is not named"])
def test_second_launch_activates_the_first(quiet, bus):
    address = {"session bus": quiet.home.session_bus, "no bus": lambda: "disabled:", "bus is not named": lambda: None}
    environment = {"DBUS_SESSION_BUS_ADDRESS": address[bus]()}
    quiet.start(environment=environment)
    quiet.display.focus_setup()
    launch_again(quiet, **environment)
    quiet.close()


@pytest.mark.on("openbox")
def test_launches_while_the_first_hangs_and_after_it_was_killed(quiet):
    quiet.start()
    quiet.display.focus_setup()
    quiet.display.minimise_setup()
    quiet.process.send_signal(signal.SIGSTOP)
    assert quiet.start().wait(timeout=10) == 0
    quiet.process.send_signal(signal.SIGCONT)
    wait_for("activated setup window", quiet.display.setup_window)

    quiet.process.kill()
    quiet.process.wait()
    wait_for("end of its window", lambda: not quiet.display.setup_window())
    quiet.process = None
    quiet.start()
    quiet.display.focus_setup()
    launch_again(quiet)


@pytest.mark.on("openbox")
def test_one_of_many_simultaneous_launches_stays(quiet):
    launches = [quiet.start() for _ in range(LAUNCHES)]
    wait_for("end of all but one", lambda: sum(
        launch.poll() is not None for launch in launches) == LAUNCHES - 1, deadline=60)
    staying, = (launch for launch in launches if launch.poll() is None)
    assert all(launch.returncode == 0 for launch in launches if launch is not staying)
    quiet.process = staying
    quiet.display.focus_setup()
    quiet.close()


@pytest.mark.on("no window manager")
def test_second_launch_changes_nothing_in_a_run(bed):
    bed.start()
    bed.wait_sealed()
    windows = bed.display.windows()
    assert bed.start().wait(timeout=10) == 0
    bed.wait_sealed()
    assert bed.display.windows() == windows
    bed.unseal()
