# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Tests of the page in Cockpit: a real browser, a real login, in a system that has booted."""

import pytest

from testbed import unit
from testbed.browser import Browser, add_user
from testbed.files import write
from testbed.plugins import (FILE_LOCK, FILE_SWITCH, FILE_SWITCH_FILE, LOCK_PLUGINS, SWITCH_PLUGIN,
                             installed)


def pytest_sessionstart():
    """Refuses to run outside the sandbox."""
    unit.refuse_elsewhere()


@pytest.fixture(scope="session", autouse=True)
def cockpit():
    """Cockpit's own service, and users with a password: one of the group sudo and one without."""
    add_user("admin", "sudo")
    add_user("viewer", "users")
    unit.run("systemctl", "start", "cockpit.socket")


@pytest.fixture
def daemon():
    """A daemon that runs for the first time, with plugins that read their files."""
    unit.reset()
    with installed(FILE_SWITCH, SWITCH_PLUGIN), installed(FILE_LOCK, LOCK_PLUGINS / "filelock.so"):
        write(FILE_SWITCH_FILE, "[lens]\npolicies=CameraEnabled;NfcEnabled\nvalue=true\n")
        unit.start()
        yield
        unit.reset()


@pytest.fixture(scope="module")
def window():
    """A browser window with administrative access, for all tests of a module."""
    with Browser("admin") as browser:
        browser.gain_access()
        yield browser


@pytest.fixture
def page(daemon, window):
    """The page with administrative access, as it is when it has just been opened."""
    window.reload()
    window.show("Policies")
    window.patiently(lambda: window.row("CameraEnabled")[1:4] == ["on", "as stored", "in force"])
    return window
