# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Fixtures for tests that run the installed daemon as their own process, on an open bus, with
simulated services."""

import contextlib
import pathlib
import shutil
import signal

import pytest

from testbed import files, simulator
from testbed.daemon import Daemon, Process
from testbed.handlers import RUNNING, TARGETS
from testbed.partitions import Partitions
from testbed.plugins import (FILE_LOCK, FILE_LOCK_FILE, LOCK_PLUGINS, LockPlugin, SwitchPlugin,
                             installed)
from testbed.services import small
from testbed.services.service import LOOP
from testbed.services.storage import Storage
from testbed.systemlog import SystemLog
from testbed.transcript import Transcript


def pytest_sessionstart():
    """Refuses to run outside the sandbox: the tests change the machine."""
    if not pathlib.Path("/run/govd-sandbox").exists():
        pytest.exit("These tests run in the sandbox only: scripts/sandbox -- ...", 1)
    # A shell ignores SIGINT in background jobs, and the daemon would inherit that.
    signal.signal(signal.SIGINT, signal.default_int_handler)
    LOOP.start()


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """Shows what the daemon has written when a test fails."""
    report = (yield).get_result()
    if report.failed and report.when == "call" and "daemon" in item.funcargs:
        report.sections.append(("the daemon's log", "\n".join(item.funcargs["daemon"].log())))


@pytest.fixture(scope="module")
def transcript():
    """The messages of the bus, which is started if another module has ended it."""
    with contextlib.closing(Transcript()) as one:
        yield one


@pytest.fixture(scope="session")
def system_log():
    """The records of the system log."""
    return SystemLog()


@pytest.fixture(autouse=True)
def fresh_files():
    """The files of a daemon that has never run."""
    files.reset()


@pytest.fixture
def daemon(transcript, system_log):
    """The daemon, not yet started."""
    transcript.clear()
    with Daemon(transcript, system_log) as watched:
        yield watched


@pytest.fixture
def process():
    """The daemon, not yet started, without a monitor of the bus: for thousands of calls."""
    with Process() as unwatched:
        yield unwatched


@pytest.fixture
def switches():
    """The access-switch plugin, without a switch yet."""
    with SwitchPlugin() as plugin:
        yield plugin


@pytest.fixture
def lock_plugin():
    """Makes lock plugins for policies, by default one in "lock.so" with the name "lock"."""
    with contextlib.ExitStack() as plugins:
        yield lambda *keys, file="lock.so", name="lock": plugins.enter_context(
            LockPlugin(file, name, keys))


@pytest.fixture
def file_lock():
    """The plugin that locks the policies in a file, without the file."""
    FILE_LOCK_FILE.parent.mkdir(exist_ok=True)
    with installed(FILE_LOCK, LOCK_PLUGINS / "filelock.so"):
        yield
    shutil.rmtree(FILE_LOCK_FILE.parent)


@pytest.fixture
def services():
    """All services that enforce policies, by their classes: on the bus, and with applications and
    tethering to end."""
    all_services = {kind: kind() for kind in TARGETS}
    for application in RUNNING:
        all_services[small.RuntimeManager].start(application)
    all_services[small.NetworkTechnology].set_tethering(True)
    for service in all_services.values():
        service.appear()
    yield all_services
    for service in all_services.values():
        service.leave()


@pytest.fixture
def device():
    """The simulated device, on the bus."""
    with simulator.start_device() as running:
        yield running


@pytest.fixture
def partitions():
    """The library of partitions in a process that must end without failure and warning."""
    with Partitions() as process:
        yield process
        assert (process.end(), process.take_log()) == (0, [])


def service_fixture(kind):
    """A fixture that gives a service of the device, not yet on the bus."""
    @pytest.fixture
    def service():
        one = kind()
        yield one
        one.leave()
    service.__doc__ = kind.__doc__
    return service


audio_policy = service_fixture(small.AudioPolicy)
application_sandbox = service_fixture(small.ApplicationSandbox)
usb_modes = service_fixture(small.UsbModes)
network = service_fixture(small.NetworkTechnology)
runtime_manager = service_fixture(small.RuntimeManager)
system_logs = service_fixture(small.SystemLogs)
device_information = service_fixture(small.DeviceInformation)
device_sentry = service_fixture(small.DeviceSentry)
developer_mode = service_fixture(small.DeveloperMode)
storage = service_fixture(Storage)


@pytest.fixture
def present(storage):
    """The storage service, on the bus."""
    storage.appear()
    return storage
