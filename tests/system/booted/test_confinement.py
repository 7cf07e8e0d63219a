# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What the daemon writes under the shipped unit, and what the unit keeps it from."""

import errno
import pathlib
import re
import shutil

import pytest

from testbed import files, unit
from testbed.bus import read_of, write_of
from testbed.files import CAMERA_MARKER, DEVELOPER_SHELL_MARKER, MARKERS, POLICY_FILE
from testbed.users import run_as

CONFINED = {"CapInh": "0" * 16, "CapPrm": "0" * 16, "CapEff": "0" * 16, "CapBnd": "0" * 16,
            "CapAmb": "0" * 16, "NoNewPrivs": "1", "Seccomp": "2"}


def test_policy_file(daemon, root):
    assert files.stored()["CameraEnabled"] == "true"
    assert root.ask(write_of("CameraEnabled", False)) == (True,)
    assert files.stored()["CameraEnabled"] == "false"
    assert (POLICY_FILE.owner(), POLICY_FILE.group()) == ("root", "root")
    assert POLICY_FILE.stat().st_mode & 0o7777 == 0o644
    unit.run("systemctl", "restart", unit.UNIT)
    assert root.ask(read_of("CameraEnabled")) == (("b", False),)


@pytest.mark.parametrize("key, marker, value_with_marker", [
    ("CameraEnabled", CAMERA_MARKER, True),
    ("UserReportExportEnabled", MARKERS / "user_report_enabled", True),
    ("DeveloperShellEnabled", DEVELOPER_SHELL_MARKER, False),
])
def test_markers(daemon, root, key, marker, value_with_marker):
    assert root.ask(write_of(key, value_with_marker)) == (True,)
    assert marker.exists()
    assert run_as("guest", "test", "-e", marker).returncode == 0
    assert root.ask(write_of(key, not value_with_marker)) == (True,)
    assert not marker.exists()


def test_directory_of_a_marker_that_is_replaced(daemon, root):
    """The daemon sees the directory that was there when it started."""
    shutil.rmtree(DEVELOPER_SHELL_MARKER.parent)
    DEVELOPER_SHELL_MARKER.parent.mkdir()
    assert root.ask(write_of("DeveloperShellEnabled", False)) == (True,)
    assert not DEVELOPER_SHELL_MARKER.exists()
    unit.run("systemctl", "try-restart", unit.UNIT)
    assert DEVELOPER_SHELL_MARKER.exists()


def test_root_is_complete(shipped_root, daemon):
    """A mount point that systemd has to add fails where /usr is read-only, and stays after a
    removal."""
    assert unit.root_content() == shipped_root


def test_no_right_is_left(daemon):
    status = pathlib.Path(f"/proc/{daemon}/status").read_text()
    found = dict(re.findall(r"^(Cap\w+|NoNewPrivs|Seccomp):\s+(\w+)$", status, re.MULTILINE))
    assert found == CONFINED


def test_nothing_else_can_be_written_or_seen(daemon):
    inside = pathlib.Path(f"/proc/{daemon}/root")
    for folder in ("etc", "usr", "var/lib"):
        with pytest.raises(OSError) as caught:
            (inside / folder / "x").touch()
        assert caught.value.errno == errno.EROFS
    assert (inside / "etc/policy").exists()
    assert not (inside / "var/log").exists()
