# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Callers that have left the bus when the daemon checks them."""

import pytest

from testbed import files
from testbed.bus import POLICY, SWITCH, write_of
from testbed.callers import asked, denial, process_query, queries
from testbed.daemon import announcement, event, event_text
from testbed.files import CAMERA_MARKER, SWITCH_FILE
from testbed.processes import held
from testbed.users import User, membership

CAMERA = "CameraEnabled"
USERS = ["root", "operator", "mdm", "guest"]


@pytest.mark.parametrize("key, address", [(CAMERA, POLICY), ("cellular", SWITCH)])
@pytest.mark.parametrize("name", USERS)
def test_gone_before_the_check(daemon, client, switches, name, key, address):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    before, calls = files.snapshots(), len(switches.calls())
    with held([daemon.pid]):
        caller = client(name)
        caller.call(write_of(key, False, address=address))
        caller.vanish()
    assert daemon.messages() == [*queries(caller), denial(0)]
    assert switches.calls(calls) == []
    assert daemon.records() == []
    assert daemon.logged() == []
    assert files.snapshots() == before
    assert not SWITCH_FILE.exists()
    assert daemon.policy(CAMERA) is True


@pytest.mark.parametrize("value", [True, False])
def test_gone_between_the_checks_of_a_policy(daemon, root, switches, value):
    """The change is made and announced; only its enforcement is refused."""
    files.store({CAMERA: not value})
    switches.set_switch("cellular", [2], True)  # governs another policy
    daemon.start()
    before = len(switches.calls())
    switches.hold("keyPolicyTypes")
    root.call(write_of(CAMERA, value))
    switches.wait_for_call("holding", before)
    root.vanish()
    switches.release()
    assert daemon.messages() == [
        *process_query(root), event(CAMERA, not value, value), *queries(root), denial(0),
        announcement(CAMERA, value)]
    assert daemon.records() == [event_text(CAMERA, not value, value)]
    text = files.text_of(value)
    assert daemon.logged() == [f'warning|default|Failed to enforce policy: "{CAMERA}" = {text}']
    assert files.stored()[CAMERA] == text
    assert daemon.policy(CAMERA) is value
    assert CAMERA_MARKER.exists() is not value  # as before


def test_gone_between_the_checks_of_a_switch(daemon, root, switches):
    switches.set_switch("cellular", [1, 3], True)
    daemon.start()
    before = len(switches.calls())
    switches.hold("setKeyValue")
    root.call(write_of("cellular", False, address=SWITCH))
    switches.wait_for_call("holding", before)
    root.vanish()
    switches.release()
    assert daemon.messages() == [
        *process_query(root),
        *queries(root), denial(0), announcement(CAMERA, False),
        *queries(root), denial(0), announcement("BluetoothEnabled", False),
        ("signal", "SwitchChanged", "cellular", False), event("cellular", True, False)]
    assert daemon.records() == [event_text("cellular", True, False)]
    assert daemon.logged() == [
        f'warning|default|Failed to enforce switch policy: "cellular" - "{key}"'
        for key in (CAMERA, "BluetoothEnabled")]
    assert switches.value("cellular") is False
    assert files.stored(SWITCH_FILE) == {"cellular": "false"}
    assert CAMERA_MARKER.exists()  # as before


@pytest.mark.parametrize("name", USERS)
def test_gone_process_is_judged_by_its_user(daemon, client, name):
    """The connection outlives the process that opened it: the bus still has both ids."""
    daemon.start()
    with held([daemon.pid]):
        caller = client(User(name))
        caller.call(write_of(CAMERA, False))
        caller.settle()
        caller.user.end()
    check = queries(caller)
    if name == "mdm":
        assert daemon.messages() == [*check, event(CAMERA, True, False), *check,
                                     announcement(CAMERA, False), ("reply", True)]
    else:
        # The bus gives 0 for a process that has ended where the kernel tells it of its end.
        assert daemon.messages() in ([*check, denial(pid)] for pid in (caller.user.pid, 0))
    assert daemon.logged() == []
    assert CAMERA_MARKER.exists() is (name != "mdm")


def test_failed_queries_stand_for_root(daemon, guest):
    with membership("root", "pellora-mdm"):
        daemon.start()
        with held([daemon.pid]):
            guest.call(write_of(CAMERA, False))
            guest.vanish()
        assert asked(daemon) == 2 * queries(guest)
        assert daemon.logged() == []
        assert daemon.policy(CAMERA) is False
        assert not CAMERA_MARKER.exists()
