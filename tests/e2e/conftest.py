import pytest
from rig.bed import X11_DISPLAYS, Bed

NOT_RUN = 77  # The exit status by which CTest counts a test as skipped.


def pytest_configure(config):
    config.addinivalue_line("markers", "x11: needs an X server")
    config.addinivalue_line("markers", "wayland: needs a Wayland compositor")
    config.addinivalue_line("markers", "on(*displays): runs once on each of these displays")
    config.skipped = 0


def pytest_generate_tests(metafunc):
    """`@pytest.mark.on(...)` names the displays on which a test runs."""
    kinds = [kind for mark in metafunc.definition.iter_markers("on") for kind in mark.args]
    if kinds:
        metafunc.parametrize("bed", indirect=True, argvalues=[
            pytest.param(kind, marks=pytest.mark.x11 if kind in X11_DISPLAYS else pytest.mark.wayland)
            for kind in kinds])


@pytest.fixture
def bed(request):
    bed = Bed(request.param)
    yield bed
    bed.end()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    report = (yield).get_result()
    item.config.skipped += report.skipped
    if report.failed and "bed" in item.funcargs and call.when == "call":
        report.sections.append(("pictures and logs", str(item.funcargs["bed"].save_evidence())))


def pytest_sessionfinish(session, exitstatus):
    """A run that could not try everything does not count as passed."""
    if exitstatus == pytest.ExitCode.OK and session.config.skipped:
        session.exitstatus = NOT_RUN
