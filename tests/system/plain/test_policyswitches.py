# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The effect of access switches on writes of a policy."""

import pytest

from testbed import files
from testbed.daemon import announcement, changed, event, event_text

KEY = "UsbDevicesEnabled"
TYPE = 45


@pytest.fixture(autouse=True)
def forbidden_and_enforced(device_sentry):
    """USB devices are forbidden from the start, and their service is on the bus."""
    files.store({KEY: False})
    device_sentry.appear()


def written(new, effective=None):
    """What said() has for a write that is a change; `effective` is the value that is enforced."""
    effective = new if effective is None else effective
    enforcement = ("call", "Set", "org.brinos.DeviceSentry1.UsbManager", "Enabled", effective)
    return [event(KEY, not new, new), enforcement,
            announcement(KEY, effective), ("reply", True)]


def test_switch_that_is_off_forces_the_new_value_to_false(daemon, switches):
    switches.set_switch("first", [1, TYPE], False)
    daemon.start()
    daemon.change(KEY, True)
    assert daemon.said() == written(True, effective=False)
    assert daemon.logged() == []
    assert daemon.policy(KEY) is False
    assert files.stored()[KEY] == "true"
    switches.set_entries("first", value=True)
    assert daemon.policy(KEY) is True  # what was stored


@pytest.mark.parametrize("types", [[TYPE], [TYPE, TYPE]])
def test_switch_that_is_on_leaves_the_new_value_alone(daemon, switches, types):
    switches.set_switch("first", types, True)
    daemon.start()
    for value in (True, False):
        daemon.change(KEY, value)
    assert daemon.said() == written(True) + written(False)


def test_switch_that_governs_others_does_not_count(daemon, switches):
    switches.set_switch("first", [1, 44, 4], False)
    switches.set_switch("second", [], False)
    daemon.start()
    before = len(switches.calls())
    daemon.change(KEY, True)
    assert daemon.said() == written(True)
    assert set(switches.calls(before)) == {"keyPolicyTypes"}


def test_failing_switch_counts_as_off(daemon, switches):
    switches.set_switch("first", [TYPE], 7)
    daemon.start()
    daemon.change(KEY, True)
    assert daemon.said() == written(True, effective=False)
    # Once for the event's old value, once for the new one.
    assert daemon.logged() == 2 * [
        'warning|default|AccessSwitch plugin failed to retrieve value for key: "first"',
        "warning|default|Return code: 7"]


def test_switches_of_no_policy_govern_unknown_keys(daemon, switches):
    key = "com.example.Wish"
    switches.set_switch("first", [0], False)
    daemon.start()
    daemon.change(key, True)
    assert daemon.said() == changed(key, False, True, False)
    assert files.stored()[key] == "true"


def test_event_has_the_effective_old_value(daemon, switches):
    switches.set_switch("first", [TYPE], True)
    daemon.start()
    daemon.change(KEY, True)
    switches.set_entries("first", value=False)
    daemon.forget()
    daemon.change(KEY, True)  # the value that it has
    assert daemon.said() == [event(KEY, False, True), ("reply", True)]
    assert daemon.records() == [event_text(KEY, False, True)]
