# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Tests of the daemon under its unit, on a bus under its policy, in a system that has booted."""

import pytest

from testbed import govctl, unit
from testbed.bus import SERVICE, Client, bus_policy, read_of, service_rules, write_of
from testbed.files import write
from testbed.holds import HOLDS, timers
from testbed.plugins import (FILE_LOCK, FILE_SWITCH, FILE_SWITCH_FILE, LOCK_PLUGINS, SWITCH_PLUGIN,
                             installed)
from testbed.waiting import wait_until


def pytest_sessionstart():
    """Refuses to run outside the sandbox."""
    unit.refuse_elsewhere()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """Shows what the daemon has written when a test fails."""
    report = (yield).get_result()
    if report.failed and "journal" in item.funcargs:
        lines = item.funcargs["journal"].lines()[-30:]
        text = "\n".join(f"[{line.pid}] <{line.priority}> {line.text[:300]}" for line in lines)
        report.sections.append(("the daemon's lines in the journal", text))


@pytest.fixture(scope="session", autouse=True)
def known_services():
    """A bus policy that lets the tests own the names of the device's services."""
    with bus_policy("services", service_rules()):
        yield


@pytest.fixture(scope="session", autouse=True)
def shipped_root():
    """The content of the daemon's root directory before its first start."""
    return unit.root_content()


@pytest.fixture
def journal():
    """The daemon's lines since the test began."""
    return unit.Journal()


@pytest.fixture
def stopped(journal):
    """A daemon that has never run."""
    unit.reset()
    yield
    unit.reset()


@pytest.fixture
def lens(stopped):
    """The plugin that reads access switches from a file, with one that governs a policy."""
    write(FILE_SWITCH_FILE, "[lens]\npolicies=NfcEnabled\nvalue=true\n")
    with installed(FILE_SWITCH, SWITCH_PLUGIN):
        yield


@pytest.fixture
def file_lock(stopped):
    """The plugin that locks what a file lists, without a file."""
    with installed(FILE_LOCK, LOCK_PLUGINS / "filelock.so"):
        yield


@pytest.fixture
def agent(client):
    """A client of a user who may write everything."""
    return client("mdm")


@pytest.fixture
def daemon(stopped):
    """A daemon that runs for the first time; its process id."""
    unit.start()
    return unit.main_pid()


@pytest.fixture(scope="module")
def lasting_daemon():
    """A daemon that serves all tests of a module, each of which leaves it as it was."""
    unit.reset()
    unit.start()
    yield
    unit.reset()


@pytest.fixture
def runtime_manager():
    """The service that ends applications; it sends no reply."""
    with Client("root", descriptors=True) as client:
        client.own("org.kvt.RuntimeManager")
        yield client


@pytest.fixture
def waiting(daemon, root, runtime_manager):
    """The process id of a daemon that waits for the service that ends applications."""
    root.send(write_of("InternetSharingEnabled", False))
    root.send(write_of("MessagesEnabled", False))
    runtime_manager.next_call()
    return daemon


@pytest.fixture
def open_bus():
    """A bus policy that passes everything on to the daemon, descriptors too."""
    everything = f'<policy context="mandatory"><allow send_destination="{SERVICE}"/></policy>'
    with bus_policy("open", everything):
        yield


@pytest.fixture
def device(daemon, root):
    """Reads policies of a daemon that runs for the first time, without holds."""
    yield lambda key: root.ask(read_of(key))[0][1]
    assert govctl.run("release").code == 0
    assert not list(HOLDS.glob("*"))
    wait_until(lambda: timers() == [])
