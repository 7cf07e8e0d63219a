# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""System calls that fail while the daemon starts."""

import pytest

from testbed import files
from testbed.files import CAMERA_MARKER
from testbed.policies import KEYS
from testbed.systemcalls import FSTAT, failing, traced

CAMERA, VPN = "CameraEnabled", "VpnEnabled"
LOOKING = pytest.mark.parametrize("error", ["EIO", "EACCES", "ENOMEM", "EMFILE"])
LOOKING_CALL = pytest.mark.parametrize(
    "call", sorted({FSTAT, "newfstatat", "statx", "access", "openat", "read"}))
SAVING = pytest.mark.parametrize("error", ["ENOSPC", "EROFS", "EIO", "EACCES"])


def names_left():
    """The names in the folder of the configuration."""
    return [path.name for path in files.POLICY_FILE.parent.iterdir()]


@LOOKING
@LOOKING_CALL
def test_unreadable_file_is_never_taken_for_a_missing_one(daemon, call, error):
    files.store({CAMERA: False, VPN: False})
    files.store({CAMERA: True}, files.POLICY_FILE.parent / "policy.d/seed.conf")
    daemon.wrapper = traced(*failing(call, "1+", error, files.POLICY_FILE))
    daemon.start()
    assert daemon.has_no_value(CAMERA) or daemon.policy(CAMERA) is False
    daemon.set(VPN, False)
    assert files.stored() | {CAMERA: "false", VPN: "false"} == files.stored()


@LOOKING
@LOOKING_CALL
def test_unreadable_switch_file_is_never_taken_for_a_missing_one(daemon, switches, call, error):
    """Whatever values the plugin has: the seed must not replace the values that were set before."""
    switches.set_switch("lens", [1], False)
    switches.set_switch("other", [], True)
    files.write(files.SWITCH_FILE, content := "[policy]\nlens=false\nother=false\n")
    files.store({"lens": True}, files.POLICY_FILE.parent / "switch.d/seed.conf")
    daemon.wrapper = traced(*failing(call, "1+", error, files.SWITCH_FILE))
    daemon.start()
    assert daemon.switch("lens") is daemon.policy(CAMERA) is False
    daemon.set_switch("other", False)
    assert files.SWITCH_FILE.read_text() == content


@SAVING
def test_what_cannot_be_saved_has_no_value(daemon, error):
    files.write(CAMERA_MARKER, "")
    daemon.wrapper = traced(*failing("rename", "1+", error))
    daemon.start()
    assert daemon.has_no_value(*KEYS)
    assert not CAMERA_MARKER.exists()  # enforced as off
    assert daemon.set(CAMERA, True) is False
    assert daemon.has_no_value(CAMERA)
    assert names_left() == []


@SAVING
def test_one_failure_costs_one_policy(daemon, error):
    files.write(CAMERA_MARKER, "")
    assert KEYS[1] == CAMERA  # the second that is saved
    daemon.wrapper = traced(*failing("rename", 2, error))
    daemon.start()
    assert daemon.has_no_value(CAMERA)
    assert not CAMERA_MARKER.exists()
    assert set(files.stored()) == set(KEYS) - {CAMERA}
    assert daemon.policy(VPN) is True
    daemon.change(CAMERA, True)
    assert CAMERA_MARKER.exists()
    assert names_left() == ["policy.conf"]
