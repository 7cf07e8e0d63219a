# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""System calls that fail while a marker file is made or removed, in a change and at start: the
daemon logs one line, and everything else is done."""

import shutil

import pytest

from testbed import files
from testbed.daemon import announcement, event
from testbed.markers import MARKERS
from testbed.systemcalls import SystemCalls, failing, injected, traced

each_failure = pytest.mark.parametrize("marker, creation, call, error", [
    pytest.param(marker, creation, call, error, id=f"{marker}, {call}: {error}")
    for marker in MARKERS
    for creation, call, errors in ((False, "unlink", "EIO EROFS EACCES EPERM"),
                                   (True, "openat", "EIO EROFS EACCES EMFILE ENFILE ENOSPC"),
                                   (True, "mkdir", "EIO EROFS EACCES ENOSPC"))
    for error in errors.split()])


def options(marker, call, number, error):
    """Options of strace that make a call for this marker fail."""
    return failing(call, number, error, marker.path.parent if call == "mkdir" else marker.path)


@each_failure
def test_failure_is_reported_and_nothing_else(daemon, marker, creation, call, error):
    value = creation == marker.there
    daemon.start()
    daemon.change(marker.key, value)
    daemon.change(marker.key, not value)
    assert marker.path.exists() is not creation
    if creation:
        shutil.rmtree(marker.path.parent)
    daemon.forget()
    calls = SystemCalls(daemon.pid, *options(marker, call, 1, error))
    daemon.change(marker.key, value)
    assert len(injected(calls.end())) == 1
    assert daemon.logged() == [marker.failure(creation)]
    assert daemon.said() == [event(marker.key, not value, value),
                             announcement(marker.key, value), ("reply", True)]
    assert files.stored()[marker.key] == files.text_of(value)
    assert daemon.policy(marker.key) is value
    assert marker.path.exists() is not creation
    # The next change succeeds again.
    daemon.change(marker.key, not value)
    daemon.change(marker.key, value)
    assert marker.path.exists() is creation


@each_failure
def test_start_goes_on_after_a_failure(daemon, marker, creation, call, error):
    value = creation == marker.there
    files.store({marker.key: value})
    if not creation:
        files.write(marker.path, "")
    daemon.wrapper = traced(*options(marker, call, "1+", error))
    daemon.start_observed()
    # Each policy is enforced twice at start.
    assert daemon.complaints().count(marker.failure(creation)) == 2
    assert marker.path.exists() is not creation
    assert daemon.policy(marker.key) is value
    assert daemon.policy("VpnEnabled") is True
    daemon.change("VpnEnabled", False)
    assert files.stored()[marker.key] == files.text_of(value)
