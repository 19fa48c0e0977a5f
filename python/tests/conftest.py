"""Shared pieces of the vektuner tests: launched daemons, their logs, and a virtual
serial cable for Link on a path. The tests run against the build tree
(PYTHONPATH=build/python, set by CTest)."""

import pytest

import vektuner
from cable import CabledDaemon

# Short enough that a test of silence stays quick, long enough for a loaded machine.
SHORT_TIMEOUT = 0.5


def daemon_log(link):
    with open(link.daemon_log, errors="replace") as f:
        return f.read()


def received(link):
    """The request frames the daemon logged, in order."""
    log = daemon_log(link)
    return [part.split("\n-RECV")[0] for part in log.split("+RECV-")[1:]]


@pytest.fixture
def link(tmp_path):
    with vektuner.launch(log=tmp_path / "daemon.log") as link:
        yield link


@pytest.fixture(scope="module")
def shared_link(tmp_path_factory):
    """One daemon for a module's tests that do not change it (stopping one takes a
    second: the daemon notices the stop between its one-second reads)."""
    with vektuner.launch(log=tmp_path_factory.mktemp("shared") / "daemon.log") as link:
        yield link


@pytest.fixture
def launched(tmp_path):
    """launched(**launch_arguments): links closed (and checked) at the end of the test."""
    with_links = []

    def start(**kwargs):
        kwargs.setdefault("log", tmp_path / f"daemon{len(with_links)}.log")
        with_links.append(vektuner.launch(**kwargs))
        return with_links[-1]

    yield start
    for each in with_links:
        each.close()


@pytest.fixture
def cabled_daemon(tmp_path):
    """A daemon on one end of a cable; yields the path of the other end."""
    daemon = CabledDaemon(vektuner.default_daemon(), log=tmp_path / "daemon.log")
    try:
        yield daemon.path
    finally:
        assert daemon.close() == 0
