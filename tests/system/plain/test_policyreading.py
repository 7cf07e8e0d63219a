# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The effective value of a policy: switches first, then locks, then the stored value."""

import pytest

from testbed import files
from testbed.bus import read_of
from testbed.files import POLICY_FILE, SWITCH_FILE

CAMERA, UNKNOWN = "CameraEnabled", "TelepathyEnabled"


@pytest.mark.parametrize("shutter", [True, False])
@pytest.mark.parametrize("lens", [True, False])
def test_every_governing_switch_counts(daemon, switches, lens, shutter):
    switches.set_switch("lens", [1, 2], lens)
    switches.set_switch("shutter", [3, 1], shutter)
    daemon.start()
    assert daemon.policy(CAMERA) is (lens and shutter)
    assert daemon.policy("LocationEnabled") is lens
    assert daemon.policy("BluetoothEnabled") is shutter
    assert daemon.policy("WlanEnabled") is True


def test_switches_are_asked_in_the_order_of_their_table(daemon, switches):
    for key in "abcdef":
        switches.set_switch(key, [1], True)
    daemon.environment["QT_HASH_SEED"] = "0"
    daemon.start()
    keys = daemon.switch_keys()
    assert len(keys) == 6
    before = len(switches.calls())
    assert daemon.policy(CAMERA) is True
    assert switches.calls(before) == ["keyPolicyTypes", *(f"keyValue {key}" for key in keys)]


def test_switches_of_odd_types_are_not_asked(daemon, switches):
    switches.set_switch("lens", [2, 3, 45, -1, 100], False)
    switches.set_switch("shutter", [], False)
    daemon.start()
    before = len(switches.calls())
    assert daemon.policy(CAMERA) is True
    assert switches.calls(before) == ["keyPolicyTypes"]


def test_switch_of_no_policy_that_is_on_gives_no_value(daemon, switches):
    switches.set_switch("lens", [0], False)
    daemon.start()
    assert daemon.policy(UNKNOWN) is daemon.policy("NoPolicy") is False
    switches.set_entries("lens", value=True)
    assert daemon.policy("NoPolicy") is True
    assert daemon.has_no_value(UNKNOWN)


def test_lock_is_asked_once_about_what_no_switch_hides(daemon, switches, lock_plugin):
    switches.set_switch("lens", [1], False)
    lock = lock_plugin(CAMERA)
    daemon.start()
    before = len(lock.calls())
    assert daemon.policy(CAMERA) is False
    assert lock.calls(before) == []
    switches.set_entries("lens", value=True)
    assert daemon.policy(CAMERA) is True
    assert lock.calls(before) == [f"policyIsLocked {CAMERA}"]


def test_reading_changes_nothing(daemon, switches):
    switches.set_switch("lens", [1], False)
    daemon.start()
    before, calls = files.snapshot(POLICY_FILE), len(switches.calls())
    assert daemon.policy(CAMERA) is False
    assert daemon.has_no_value(UNKNOWN)
    assert daemon.said() == [("reply", False)]
    assert daemon.records() == []
    assert daemon.logged() == []  # any user could fill the log
    assert files.snapshot(POLICY_FILE) == before
    assert not SWITCH_FILE.exists()
    assert not [call for call in switches.calls(calls) if call.startswith("setKeyValue")]


def test_keys_are_compared_exactly(daemon):
    daemon.start()
    assert daemon.has_no_value("cameraEnabled", "CAMERAENABLED", "CameraEnabled ",
                               " CameraEnabled", "CameraEnable", "Camera", "1", "")


def test_reader_without_an_answer_delays_no_other(daemon, root):
    daemon.start()
    with pytest.raises(TimeoutError):
        root.ask(read_of(UNKNOWN), 0.3)
    assert daemon.messages() == daemon.logged() == []
    assert daemon.policy(CAMERA) is True
    daemon.change(CAMERA, False)
    assert daemon.policy(CAMERA) is False


def test_key_without_a_value_gets_one(daemon):
    daemon.start()
    assert daemon.has_no_value(UNKNOWN)
    daemon.change(UNKNOWN, True)
    assert daemon.policy(UNKNOWN) is True
    assert daemon.has_no_value("telepathyEnabled")
