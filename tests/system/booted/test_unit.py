# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The unit itself, and the daemon under it on faulty systems."""

import pathlib

import pytest
from jeepney import DBusErrorResponse

from testbed import files, unit
from testbed.bus import read_of, write_of
from testbed.files import CAMERA_MARKER, DEVELOPER_SHELL_MARKER, POLICY_FILE

LOG = ("systemd-journald.socket", "systemd-journald-dev-log.socket", "systemd-journald.service")


@pytest.fixture
def enabled():
    """A unit that is started at boot."""
    unit.run("systemctl", "enable", "--quiet", unit.UNIT)
    yield
    unit.run("systemctl", "disable", "--quiet", unit.UNIT)


@pytest.fixture
def without_log(daemon):
    """A system whose log service is stopped."""
    unit.run("systemctl", "stop", *LOG)
    yield
    unit.run("systemctl", "start", *LOG)


@pytest.fixture
def read_only_configuration(stopped):
    """A system with a read-only /etc."""
    with files.mounted("/etc", "--bind", "/etc"):
        unit.run("mount", "-o", "remount,bind,ro", "/etc")
        yield


def starts_and_refuses(root, journal, line):
    """Whether the daemon runs, refuses a write that it cannot save, and logs the reason."""
    unit.start()
    refused = root.ask(write_of("CameraEnabled", False)) == (False,)
    return refused and [found for found in journal.lines() if line in found.text]


def test_exposure():
    unit.run("systemd-analyze", "verify", "--man=no", unit.UNIT)
    unit.run("systemd-analyze", "security", "--no-pager", "--threshold=7", unit.UNIT)


def test_comes_before_logins(enabled):
    assert {"systemd-user-sessions.service", "display-manager.service",
            "multi-user.target"} <= set(unit.shown("Before").split())
    wanted = pathlib.Path("/etc/systemd/system/multi-user.target.wants", unit.UNIT)
    assert wanted.is_symlink()


@pytest.mark.bus
def test_no_activation(stopped, root):
    """A call while the daemon does not run fails at once, and starts nothing."""
    with pytest.raises(DBusErrorResponse) as caught:
        root.ask(read_of("CameraEnabled"))
    assert caught.value.name == "org.freedesktop.DBus.Error.ServiceUnknown"
    assert unit.shown("ActiveState") == "inactive"


def test_missing_policy_directory(stopped, root, journal):
    POLICY_FILE.parent.rmdir()
    assert starts_and_refuses(root, journal, "Error saving key file")
    assert not POLICY_FILE.parent.exists()
    POLICY_FILE.parent.mkdir()
    unit.run("systemctl", "restart", unit.UNIT)
    assert root.ask(write_of("CameraEnabled", False)) == (True,)


def test_missing_marker_directories(stopped, root):
    folders = (CAMERA_MARKER.parent, DEVELOPER_SHELL_MARKER.parent)
    for folder in folders:
        folder.rmdir()
    unit.start()
    assert CAMERA_MARKER.exists()
    assert root.ask(write_of("DeveloperShellEnabled", False)) == (True,)
    assert DEVELOPER_SHELL_MARKER.exists()
    for folder in folders:
        assert (folder.stat().st_mode & 0o7777, folder.owner()) == (0o755, "root")


def test_read_only_configuration(read_only_configuration, root, journal):
    assert starts_and_refuses(root, journal, "Error saving key file")


def test_stopped_system_log(without_log, root):
    assert root.ask(write_of("CameraEnabled", False)) == (True,)
