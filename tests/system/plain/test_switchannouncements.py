# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""A switch that changes in any way: the plugin announces it, the daemon applies it."""

import pytest

from testbed import files
from testbed.daemon import announcement
from testbed.files import CAMERA_MARKER


def switched(value, key="cellular"):
    """What said() has for the announcement of a switch."""
    return ("signal", "SwitchChanged", key, value)


@pytest.mark.parametrize("value", [True, False])
@pytest.mark.parametrize("stored", [True, False])
def test_policy_is_stored_value_and_switch_value(daemon, switches, stored, value):
    files.store({"CameraEnabled": stored})
    switches.set_switch("cellular", [1], not value)
    daemon.start()
    assert CAMERA_MARKER.exists() is (stored and not value)
    switches.set_entries("cellular", value=value)
    switches.announce("cellular", value)
    assert daemon.said() == [announcement("CameraEnabled", stored and value), switched(value)]
    assert CAMERA_MARKER.exists() is daemon.policy("CameraEnabled") is (stored and value)
    assert daemon.logged() == []


def test_policies_come_in_the_order_of_the_list_before_the_switch(daemon, switches):
    switches.set_switch("cellular", [4, 1, 3, 4], True)
    switches.set_switch("other", [2], True)
    daemon.start()
    switches.announce("cellular", False)
    assert daemon.said() == [*(announcement(key, False) for key in (
        "WlanEnabled", "CameraEnabled", "BluetoothEnabled", "WlanEnabled")), switched(False)]


def test_unchanged_effect_is_announced_and_enforced_again(daemon, switches):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    CAMERA_MARKER.unlink()
    switches.announce("cellular", True)
    switches.announce("cellular", True)
    assert daemon.said() == 2 * [announcement("CameraEnabled", True), switched(True)]
    assert CAMERA_MARKER.exists()


def test_announced_value_counts_not_the_one_to_read(daemon, switches):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    before = len(switches.calls())
    switches.announce("cellular", False)
    assert daemon.said() == [announcement("CameraEnabled", False), switched(False)]
    assert not CAMERA_MARKER.exists()
    assert switches.calls(before) == ["keyPolicyTypes", "done"]
    assert daemon.policy("CameraEnabled") is True  # a reader asks the plugin
    assert daemon.switch("cellular") is True


def test_other_switches_do_not_count(daemon, switches):
    switches.set_switch("a", [1], False)
    switches.set_switch("b", [1], False)
    daemon.start()
    assert not CAMERA_MARKER.exists()
    for key in ("a", "b"):
        CAMERA_MARKER.unlink(missing_ok=True)
        daemon.forget()
        switches.announce(key, True)
        assert daemon.said() == [announcement("CameraEnabled", True), switched(True, key)]
        assert CAMERA_MARKER.exists()
        assert daemon.policy("CameraEnabled") is False


def test_locks_do_not_count(daemon, switches, lock_plugin):
    switches.set_switch("cellular", [1], False)
    locks = lock_plugin("CameraEnabled")
    daemon.start()
    locks.set_locked("CameraEnabled")
    daemon.forget()
    before = len(locks.calls())
    switches.announce("cellular", True)
    assert daemon.said() == [announcement("CameraEnabled", True), switched(True)]
    assert CAMERA_MARKER.exists()
    assert locks.calls(before) == []


def test_policy_without_a_value_is_off(daemon, switches, lock_plugin):
    locks = lock_plugin("CameraEnabled")
    locks.set_locked("CameraEnabled")  # so the value is never stored
    switches.set_switch("cellular", [1], True)
    daemon.start()
    locks.set_locked()
    daemon.forget()
    switches.announce("cellular", True)
    assert daemon.said() == [announcement("CameraEnabled", False), switched(True)]
    assert not CAMERA_MARKER.exists()


def test_numbers_that_are_no_policies(daemon, switches):
    switches.set_switch("cellular", [46, -1, 0, 1], True)
    daemon.start()
    switches.announce("cellular", True)
    # An unknown number has no key. Number 0 has a key, and a value as all keys have.
    assert daemon.said() == [announcement("", False), announcement("", False),
                             announcement("NoPolicy", True), announcement("CameraEnabled", True),
                             switched(True)]
    assert daemon.logged() == []


@pytest.mark.parametrize("key", ["cellular", "unknown"])
def test_switch_that_governs_nothing(daemon, switches, key):
    switches.set_switch("cellular", [], True)
    switches.set_switch("other", [1], True)
    daemon.start()
    switches.announce(key, False)
    assert daemon.said() == [switched(False, key)]
    assert daemon.logged() == []
    assert CAMERA_MARKER.exists()


def test_nothing_is_saved_or_recorded(daemon, switches):
    switches.set_switch("cellular", [1], True)
    daemon.start_observed()
    policies = files.snapshot(files.POLICY_FILE)
    switches.announce("cellular", False)
    assert daemon.records() == []
    assert files.snapshot(files.POLICY_FILE) == policies
    assert not files.SWITCH_FILE.exists()
    assert files.stored()["CameraEnabled"] == "true"


@pytest.mark.parametrize("value, effect", [(0, False), (5, True), ("off", True), ("False", False)])
def test_other_kinds_of_values(daemon, switches, value, effect):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    switches.announce("cellular", value)
    policy, switch = daemon.said()
    assert policy == announcement("CameraEnabled", effect) and policy[3] is effect
    assert switch == switched(value) and not isinstance(switch[3], bool)
    assert CAMERA_MARKER.exists() is effect


def test_value_that_cannot_be_sent(daemon, switches):
    """An invalid value cannot be sent, so the switch itself is not announced."""
    switches.set_switch("cellular", [1], True)
    daemon.start()
    switches.announce("cellular", None)
    assert daemon.said() == [announcement("CameraEnabled", False)]
    assert not CAMERA_MARKER.exists()


@pytest.mark.parametrize("signature, stored, effect", [
    ("i", 1, True), ("i", 0, False), ("s", "off", True), ("s", "FALSE", False)])
def test_other_kinds_of_stored_values(daemon, switches, signature, stored, effect):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    # The value before differs, because an equal one of another type would not be stored.
    daemon.change("CameraEnabled", not effect)
    assert daemon.set("CameraEnabled", stored, signature) is True
    daemon.forget()
    switches.announce("cellular", True)
    assert daemon.said() == [announcement("CameraEnabled", effect), switched(True)]
    assert CAMERA_MARKER.exists() is effect
