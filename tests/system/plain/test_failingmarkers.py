# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""System calls that fail while a marker file is made or removed, in a change and at start: the
daemon logs one line, and everything else is done."""

import pathlib
import shutil
from dataclasses import dataclass

import pytest

from testbed import files
from testbed.daemon import announcement, event
from testbed.systemcalls import SystemCalls, failing, injected, traced


@dataclass(frozen=True)
class Marker:
    """A policy that is enforced by a marker file, and the warnings when that fails."""
    policy: str
    path: pathlib.Path
    there_when_allowed: bool
    warnings: tuple  # when it is not removed, when it is not made


def file_warnings(path):
    """The daemon's warnings about most markers."""
    return tuple(f'Failed to {what} file: "{path}"' for what in ("remove", "create"))


REPORTS = files.MARKERS / "user_report_enabled"
MARKERS = (
    Marker("CameraEnabled", files.CAMERA_MARKER, True, file_warnings(files.CAMERA_MARKER)),
    Marker("UserReportExportEnabled", REPORTS, True, file_warnings(REPORTS)),
    Marker("DeveloperShellEnabled", files.DEVELOPER_SHELL_MARKER, False,
           ("Failed to enable devel-su", "Failed to disable devel-su")),
)

EVERY_FAILURE = pytest.mark.parametrize("marker, creation, call, error", [
    pytest.param(marker, creation, call, error, id=f"{marker.policy}, {call}: {error}")
    for marker in MARKERS
    for creation, call, errors in ((False, "unlink", "EIO EROFS EACCES EPERM"),
                                   (True, "openat", "EIO EROFS EACCES EMFILE ENFILE ENOSPC"),
                                   (True, "mkdir", "EIO EROFS EACCES ENOSPC"))
    for error in errors.split()])


def options(marker, call, number, error):
    """Options of strace that make a call for this marker fail."""
    return failing(call, number, error, marker.path.parent if call == "mkdir" else marker.path)


@EVERY_FAILURE
def test_failure_is_reported_and_nothing_else(daemon, marker, creation, call, error):
    value = creation == marker.there_when_allowed
    daemon.start()
    daemon.change(marker.policy, value)
    daemon.change(marker.policy, not value)
    assert marker.path.exists() is not creation
    if creation:
        shutil.rmtree(marker.path.parent)
    daemon.forget()
    calls = SystemCalls(daemon.pid, *options(marker, call, 1, error))
    daemon.change(marker.policy, value)
    assert len(injected(calls.end())) == 1
    assert daemon.logged() == [f"warning|default|{marker.warnings[creation]}"]
    assert daemon.said() == [event(marker.policy, not value, value),
                             announcement(marker.policy, value), ("reply", True)]
    assert files.stored()[marker.policy] == files.text_of(value)
    assert daemon.policy(marker.policy) is value
    assert marker.path.exists() is not creation
    # The next change succeeds again.
    daemon.change(marker.policy, not value)
    daemon.change(marker.policy, value)
    assert marker.path.exists() is creation


@EVERY_FAILURE
def test_start_goes_on_after_a_failure(daemon, marker, creation, call, error):
    value = creation == marker.there_when_allowed
    files.store({marker.policy: value})
    if not creation:
        files.write(marker.path, "")
    daemon.wrapper = traced(*options(marker, call, "1+", error))
    daemon.start_observed()
    # Each policy is enforced twice at start.
    assert daemon.complaints().count(f"warning|default|{marker.warnings[creation]}") == 2
    assert marker.path.exists() is not creation
    assert daemon.policy(marker.policy) is value
    assert daemon.policy("VpnEnabled") is True
    daemon.change("VpnEnabled", False)
    assert files.stored()[marker.policy] == files.text_of(value)
