# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""System calls that fail while the file of a policy or of a switch is written.

A switch belongs to its plugin, which has set and announced the new value before the file is
written: the caller gets the failure, and the plugin keeps the value.
"""

import pytest

from testbed import files
from testbed.daemon import announcement, event
from testbed.files import CAMERA_MARKER
from testbed.systemcalls import FSTAT, SystemCalls, failing, injected, number_of

SWITCHED_OFF = [announcement("CameraEnabled", False), ("signal", "SwitchChanged", "lens", False)]


class PolicyWrite:
    """A write of a policy."""
    KEY, FILE, IS_SWITCH = "CameraEnabled", files.POLICY_FILE, False

    def __init__(self, daemon):
        self.make = lambda value: daemon.set(self.KEY, value)
        self.read = lambda: daemon.policy(self.KEY)


class SwitchWrite:
    """A write of a switch that governs it."""
    KEY, FILE, IS_SWITCH = "lens", files.SWITCH_FILE, True

    def __init__(self, daemon):
        self.make = lambda value: daemon.set_switch(self.KEY, value)
        self.read = lambda: daemon.switch(self.KEY)


def rows(*families):
    """A row for each error of a call; of its text, FILE stands for the path of the file."""
    return pytest.mark.parametrize("kind, call, text, error", [
        pytest.param(kind, call, text.replace("FILE", str(kind.FILE)), error,
                     id=f"{kind.KEY}, {name}: {error}")
        for name, call, text, errors in families
        for error in errors.split() for kind in (PolicyWrite, SwitchWrite)])


def make_with(daemon, write, call, text, error):
    """Writes "off" while one system call fails. Returns the answer, and the file before."""
    # All writes from the second one on make the same calls.
    assert write.make(False) is write.make(True) is True
    rehearsal = SystemCalls(daemon.pid)
    assert write.make(False) is True
    number = number_of(call, text, rehearsal.end())
    assert number, "such a call is not made"
    assert write.make(True) is True
    daemon.forget()
    before = files.snapshot(write.FILE)
    calls = SystemCalls(daemon.pid, *failing(call, number, error))
    answer = write.make(False)
    line, = injected(calls.end())
    assert text in line
    return answer, before


@rows(("file not opened", "openat", '"FILE"', "EIO EACCES EMFILE ENOMEM"),
      ("file not described", FSTAT, "<FILE>", "EIO"),
      ("file not read", "read", "<FILE>", "EIO"),
      ("new file not opened", "openat", '"FILE.', "ENOSPC EMFILE EROFS EACCES EIO"),
      ("content not written", "write", "<FILE.", "ENOSPC EIO EDQUOT EFBIG"),
      ("content not on the disk", "fsync", "<FILE.", "EIO ENOSPC"),
      ("new file not closed", "close", "<FILE.", "EIO ENOSPC"),
      ("not renamed", "rename", '"FILE"', "ENOSPC EROFS EIO EACCES"))
def test_write_that_cannot_be_saved_is_refused(daemon, switches, kind, call, text, error):
    switches.set_switch("lens", [1], True)
    daemon.start()
    write = kind(daemon)
    answer, before = make_with(daemon, write, call, text, error)
    assert answer is False
    assert daemon.said() == [*SWITCHED_OFF * kind.IS_SWITCH, ("reply", False)]
    assert daemon.records() == []
    assert len(daemon.logged()) == 2
    assert files.snapshot(write.FILE) == before
    # No partly written file is left.
    assert not [path for path in write.FILE.parent.iterdir() if ".conf." in path.name]
    assert write.read() is CAMERA_MARKER.exists() is not kind.IS_SWITCH


@rows(("file not looked at", "newfstatat", '"FILE"', "EIO EACCES ENOMEM"),
      ("old file not looked at", "newfstatat", "AT_SYMLINK_NOFOLLOW", "EIO"),
      ("no space reserved", "fallocate", "<FILE.", "ENOSPC EOPNOTSUPP"),
      ("writing interrupted", "write", "<FILE.", "EINTR"),
      ("directory not opened", "openat", '"/etc/policy"', "EMFILE EIO"),
      ("directory not on the disk", "fsync", "</etc/policy>", "EIO"))
def test_harmless_failure_is_not_logged(daemon, switches, kind, call, text, error):
    switches.set_switch("lens", [1], True)
    daemon.start()
    write = kind(daemon)
    answer, before = make_with(daemon, write, call, text, error)
    assert answer is True
    recorded = [event(write.KEY, True, False)]
    assert daemon.said() == [
        *(SWITCHED_OFF + recorded if kind.IS_SWITCH else recorded + SWITCHED_OFF[:1]),
        ("reply", True)]
    assert daemon.logged() == []
    values = files.stored(write.FILE)
    assert values[write.KEY] == "false"
    assert len(values) == before[0].count(b"=")  # no other key is lost
    assert write.read() is CAMERA_MARKER.exists() is False


def test_new_file_that_cannot_be_removed_is_not_read(daemon):
    """The new file that could not be renamed stays beside the old one, and is never read."""
    daemon.start()
    calls = SystemCalls(daemon.pid, "-e", "inject=rename,unlink:error=EROFS:when=1")
    answer = daemon.set("CameraEnabled", False)
    assert len(injected(calls.end())) == 2
    assert answer is False
    assert len(list(files.POLICY_FILE.parent.iterdir())) == 2
    assert daemon.policy("CameraEnabled") is True
    daemon.change("VpnEnabled", False)
    assert daemon.stop() == 0
    daemon.start()
    assert daemon.policy("CameraEnabled") is True
    assert daemon.policy("VpnEnabled") is False
