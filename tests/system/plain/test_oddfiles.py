# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Odd contents of the policy file, and every kind of object in the place of each file and folder
that the daemon touches: it does not hang, ends with code 0, and writes nowhere else.

A link in the place of a configuration file is followed for reading, and the first write replaces it
by a file. A dangling link in the place of a marker makes the daemon create its target. All these
folders belong to root.
"""

import os
import pathlib
import socket
import stat

import pytest

from testbed import files
from testbed.policies import KEYS

CAMERA, VPN = "CameraEnabled", "VpnEnabled"
FORBIDDEN = b"[policy]\nCameraEnabled=false\n"
MEBIBYTE = 1 << 20
THOUSANDS = 100_000 if "GOVD_HOLD" in os.environ else 10_000

# What a symbolic link leads to: a file, and nothing.
VICTIM, NOWHERE = pathlib.Path("/var/tmp/victim"), pathlib.Path("/var/tmp/nowhere")


def make_socket(path):
    """A socket at a path, without a listener."""
    with socket.socket(socket.AF_UNIX) as made:
        made.bind(str(path))


OBJECTS = {
    "link": lambda path: path.symlink_to(VICTIM),
    "dangling link": lambda path: path.symlink_to(NOWHERE),
    "link to itself": lambda path: path.symlink_to(path),
    "pipe": os.mkfifo,
    "directory": lambda path: (path / "inside").mkdir(parents=True),
    "endless device": lambda path: os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(1, 5)),
    "socket": make_socket,
}


@pytest.mark.parametrize("kind", OBJECTS)
@pytest.mark.parametrize("path", [
    "/etc/policy/policy.conf", "/etc/policy/switch.conf", "/etc/policy/policy.d",
    "/etc/policy/switch.d", "/etc/policy/policy.d/seed", "/etc/policy/switch.d/seed",
    "/var/lib/govd", "/var/lib/govd/camera_enabled", "/var/lib/govd/user_report_enabled",
    "/var/lib/devel-su", "/var/lib/devel-su/.disable"])
def test_odd_object(daemon, switches, path, kind):
    switches.set_switch("camera", [1], True)
    files.write(VICTIM, FORBIDDEN)
    NOWHERE.unlink(missing_ok=True)
    pathlib.Path(path).parent.mkdir(parents=True, exist_ok=True)
    OBJECTS[kind](pathlib.Path(path))
    before = files.snapshot(VICTIM)
    daemon.start()
    for value in (False, True, False):
        for key in (CAMERA, "UserReportExportEnabled", "DeveloperShellEnabled"):
            daemon.set(key, value)
        daemon.set_switch("camera", value)
    assert daemon.stop() == 0
    assert files.snapshot(VICTIM) == before
    assert path.endswith(("enabled", "disable")) or not NOWHERE.exists()


@pytest.mark.parametrize("content, camera", [
    pytest.param(content, camera, id=name) for name, content, camera in [
        ("empty", b"", True),
        ("key twice, allowed last", FORBIDDEN + b"CameraEnabled=true\n", True),
        ("key twice, forbidden last",
         b"[policy]\nCameraEnabled=true\nCameraEnabled=false\n", False),
        ("group twice", FORBIDDEN + b"[x]\na=1\n[policy]\nVpnEnabled=true\n", False),
        ("byte-order mark", b"\xef\xbb\xbf" + FORBIDDEN, None),
        ("DOS lines", FORBIDDEN.replace(b"\n", b"\r\n"), False),
        ("Mac lines", FORBIDDEN.replace(b"\n", b"\r"), None),
        ("blanks", FORBIDDEN + b" " * MEBIBYTE, False),
        ("newlines", b"\n" * MEBIBYTE + FORBIDDEN, False),
        ("zeros", b"\0" * MEBIBYTE, True),
        ("zeros behind", FORBIDDEN + b"\0" * 4096, False),
        ("brackets", FORBIDDEN + b"[" * MEBIBYTE, None),
        ("equal signs", FORBIDDEN + b"=" * MEBIBYTE, None),
        ("a letter", FORBIDDEN + b"a" * MEBIBYTE, None),
        ("a comment", FORBIDDEN + b"#" + b"a" * MEBIBYTE, False),
        ("thousands of keys",
         FORBIDDEN + b"".join(b"Key%d=true\n" % number for number in range(THOUSANDS)), False),
    ]])
def test_odd_content(daemon, content, camera):
    files.write(files.POLICY_FILE, content)
    daemon.start()
    if camera is None:
        assert daemon.has_no_value(*KEYS)
        assert daemon.set(VPN, False) is False
        assert files.POLICY_FILE.read_bytes() == content  # kept for a repair
    else:
        assert daemon.policy(CAMERA) is camera
        daemon.change(VPN, False)
        assert files.stored()[VPN] == "false"
    assert daemon.stop() == 0
