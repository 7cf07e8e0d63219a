# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Policies that switches govern: a read asks all of the switches, a write only the first."""

import pytest

from testbed import files
from testbed.daemon import announcement, event, event_text
from testbed.files import CAMERA_MARKER

OTHER = "Other"  # no policy has this key; its type is 0


@pytest.fixture
def camera_switches(switches):
    """Switches of which "a" and "b" govern the camera."""
    switches.set_switch("a", [2, 1], True)
    switches.set_switch("b", [1, 3, 1], True)
    switches.set_switch("c", [2], False)
    return switches


def in_order(daemon):
    """The switches of the camera, in the order of the plugin's table."""
    return [key for key in daemon.switch_keys() if key != "c"]


def questions(keys):
    """The calls to the plugin when these switches are asked about one policy."""
    return ["keyPolicyTypes", *(f"keyValue {key}" for key in keys)]


def failure(code):
    """The lines of the log when the switch "a" cannot be read."""
    return ['warning|default|AccessSwitch plugin failed to retrieve value for key: "a"',
            f"warning|default|Return code: {code}"]


def set_in_order(switches, keys, *values):
    """Gives the switches their values without an announcement."""
    for key, value in zip(keys, values):
        switches.set_entries(key, value=value)


@pytest.mark.parametrize("stored, first, second, asked, value", [
    (True, True, True, 2, True), (True, True, False, 2, False), (True, False, True, 1, False),
    (True, False, False, 1, False), (False, True, True, 2, False), (False, False, True, 1, False)])
def test_all_switches_count_for_readers(daemon, camera_switches, stored, first, second, asked,
                                        value):
    files.store({"CameraEnabled": stored})
    daemon.start()
    keys = in_order(daemon)
    set_in_order(camera_switches, keys, first, second)
    before = len(camera_switches.calls())
    assert daemon.policy("CameraEnabled") is value
    # Each at most once, however often its list names the policy.
    assert camera_switches.calls(before) == questions(keys[:asked])


def test_reading_takes_a_failing_switch_for_off(daemon, switches):
    switches.set_switch("a", [1], 4)
    daemon.start()
    assert daemon.policy("CameraEnabled") is False
    assert daemon.logged() == failure(4)
    switches.set_entries("a", value="true")
    daemon.forget()
    assert daemon.policy("CameraEnabled") is False
    assert daemon.logged() == ['warning|default|Unknown value type "a"']


def test_reading_asks_switches_before_locks(daemon, switches, lock_plugin):
    switches.set_switch("a", [1], False)
    locks = lock_plugin("CameraEnabled")
    daemon.start()
    locks.set_locked("CameraEnabled")
    before = len(locks.calls())
    assert daemon.policy("CameraEnabled") is False
    assert locks.calls(before) == []
    switches.set_entries("a", value=True)
    assert daemon.policy("CameraEnabled") is False
    assert len(locks.calls()) > before
    locks.set_locked()
    assert daemon.policy("CameraEnabled") is True


def test_reading_no_policy_type_asks_switches_of_type_0(daemon, switches):
    switches.set_switch("zero", [0], True)
    daemon.start()
    daemon.change(OTHER, True)
    assert daemon.policy(OTHER) is True
    switches.set_entries("zero", value=False)
    # So does a key without a stored value, which would have no value without the switch.
    for key in (OTHER, "cameraenabled", "NoPolicy"):
        assert daemon.policy(key) is False
    assert daemon.policy("CameraEnabled") is True
    switches.set_entries("zero", value=True)
    assert daemon.has_no_value("cameraenabled")


@pytest.mark.parametrize("a, b", [(True, True), (False, True), (True, False)])
def test_start_enforces_what_readers_see(daemon, camera_switches, a, b):
    """The last enforcement at the start asks all switches, so their order does not matter."""
    files.store({"CameraEnabled": True})
    set_in_order(camera_switches, "ab", a, b)
    daemon.start()
    assert CAMERA_MARKER.exists() is daemon.policy("CameraEnabled") is (a and b)
    assert files.stored()["CameraEnabled"] == "true"


@pytest.mark.parametrize("first, second, asked, enforced, readable", [
    (True, True, 2, True, True), (True, False, 2, True, False), (False, True, 1, False, False),
    (False, False, 1, False, False)])
def test_first_switch_counts_for_writes(daemon, camera_switches, root, first, second, asked,
                                        enforced, readable):
    files.store({"CameraEnabled": False})
    daemon.start()
    keys = in_order(daemon)
    set_in_order(camera_switches, keys, first, second)
    assert not CAMERA_MARKER.exists()
    daemon.forget()
    before = len(camera_switches.calls())
    daemon.change("CameraEnabled", True)
    said = daemon.messages()
    question = said[0]
    assert question[:2] == ("call", "GetConnectionUnixProcessID")
    assert said == [question, event("CameraEnabled", False, True), question,
                    announcement("CameraEnabled", enforced), ("reply", True)]
    # The questions of a read are for the old value in the event.
    assert camera_switches.calls(before) == questions(keys[:asked]) + questions(keys[:1])
    assert CAMERA_MARKER.exists() is enforced
    assert files.stored()["CameraEnabled"] == "true"
    assert daemon.policy("CameraEnabled") is readable
    assert daemon.logged() == []


def test_writing_false_does_not_ask_switches(daemon, switches):
    switches.set_switch("a", [1], True)
    daemon.start()
    before = len(switches.calls())
    daemon.change("CameraEnabled", False)
    # The only question is that of a read, for the old value in the event.
    assert switches.calls(before) == ["keyPolicyTypes", "keyValue a", "keyPolicyTypes"]


def test_writing_takes_a_failing_switch_for_off(daemon, switches):
    files.store({"CameraEnabled": False})
    switches.set_switch("a", [1], True)
    daemon.start()
    switches.set_entries("a", value=9)
    daemon.forget()
    daemon.change("CameraEnabled", True)
    assert announcement("CameraEnabled", False) in daemon.said()
    assert daemon.logged() == 2 * failure(9)  # for the old value, and for the new one
    assert not CAMERA_MARKER.exists()


def test_writing_no_policy_type_asks_switches_of_type_0(daemon, switches):
    switches.set_switch("zero", [0], False)
    daemon.start()
    daemon.change(OTHER, True)
    assert announcement(OTHER, False) in daemon.said()
    assert files.stored()[OTHER] == "true"


def test_store_keeps_true_under_a_switch_that_is_off(daemon, switches):
    files.store({"CameraEnabled": False})
    switches.set_switch("a", [1], False)
    daemon.start()
    daemon.change("CameraEnabled", True)
    assert daemon.policy("CameraEnabled") is False
    assert not CAMERA_MARKER.exists()
    daemon.forget()
    # The same stored value again is no change, although the effective value differs.
    daemon.change("CameraEnabled", True)
    assert daemon.records() == [event_text("CameraEnabled", False, True)]
    assert daemon.announcements() == []
    assert daemon.set_switch("a", True) is True
    assert announcement("CameraEnabled", True) in daemon.said()
    assert CAMERA_MARKER.exists()
    assert daemon.policy("CameraEnabled") is True
