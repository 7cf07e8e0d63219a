# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""How often, and when, the daemon asks the bus about its caller."""

import pytest

from testbed import files
from testbed.bus import SWITCH, write_of
from testbed.callers import asked, process_query, queries
from testbed.daemon import announcement, event

LOCATION = "LocationEnabled"
REPLY = ("reply", True)
CHECK = "?"  # stands for one check of the caller in a list of messages
POLICY_WRITES = [  # key, value and what happens
    (LOCATION, False, [CHECK, event(LOCATION, True, False), CHECK, announcement(LOCATION, False),
                       REPLY]),
    (LOCATION, True, [CHECK, event(LOCATION, True, True), REPLY]),
    ("Other", True, [CHECK, event("Other", "", True), CHECK, announcement("Other", True), REPLY]),
]
EVENT = event("cellular", True, False)
SWITCHED = ("signal", "SwitchChanged", "cellular", False)
LOCATION_OFF, NOTHING_OFF, WLAN_OFF = (
    announcement(key, False) for key in (LOCATION, "", "WlanEnabled"))
THREE = [2, 999, 4]  # two policies without a handler, and a number of no policy
SWITCH_WRITES = {  # the switch's policies, when it is announced, the plugin's result; what happens
    "announced, governs nothing": ([], "inside", 0, [CHECK, SWITCHED, EVENT, REPLY]),
    "announced, governs one": ([2], "inside", 0, [CHECK, CHECK, LOCATION_OFF, SWITCHED, EVENT,
                                                  REPLY]),
    "announced, governs three": (THREE, "inside", 0, [
        CHECK, CHECK, LOCATION_OFF, CHECK, NOTHING_OFF, CHECK, WLAN_OFF, SWITCHED, EVENT, REPLY]),
    "announced later": (THREE, "later", 0, [CHECK, EVENT, REPLY, LOCATION_OFF, NOTHING_OFF,
                                            WLAN_OFF, SWITCHED]),
    "never announced": (THREE, "never", 0, [CHECK, EVENT, REPLY]),
    "refused by the plugin": (THREE, "inside", 3, [CHECK, ("reply", False)]),
}


def with_checks(messages, check):
    """The messages, with CHECK replaced by the questions of one check."""
    return [words for message in messages for words in (check if message == CHECK else [message])]


@pytest.mark.parametrize("name, check", [("root", process_query), ("operator", process_query),
                                         ("mdm", queries)])
@pytest.mark.parametrize("key, value, messages", POLICY_WRITES)
def test_policy_write(daemon, client, name, check, key, value, messages):
    daemon.start()
    caller = client(name)
    assert caller.ask(write_of(key, value)) == (True,)
    assert daemon.messages() == with_checks(messages, check(caller))


def test_locked_policy_is_checked_once(daemon, root, lock_plugin):
    lock_plugin(LOCATION).set_locked(LOCATION)
    daemon.start()
    assert root.ask(write_of(LOCATION, True)) == (False,)
    assert daemon.messages() == [*process_query(root), ("reply", False)]


def test_policy_that_cannot_be_saved_is_checked_once(daemon, root):
    daemon.start()
    with files.read_only(files.POLICY_FILE.parent):
        assert root.ask(write_of(LOCATION, False)) == (False,)
    assert daemon.messages() == [*process_query(root), ("reply", False)]


@pytest.mark.parametrize("name, check", [("root", process_query), ("agent", queries)])
@pytest.mark.parametrize("types, announce, result, messages", SWITCH_WRITES.values(),
                         ids=SWITCH_WRITES.keys())
def test_switch_write(daemon, client, switches, name, check, types, announce, result, messages):
    switches.set_switch("cellular", types, True)
    switches.set_entries("cellular", announce=announce, result=result)
    daemon.start()
    caller = client(name)
    assert caller.ask(write_of("cellular", False, address=SWITCH)) == (result == 0,)
    if announce == "later":
        daemon.transcript.wait_for(lambda message: message.member == "SwitchChanged")
    assert daemon.messages() == with_checks(messages, check(caller))


def test_switch_without_plugin_is_checked_once(daemon, client):
    daemon.start()
    caller = client("mdm")
    assert caller.ask(write_of("cellular", True, address=SWITCH)) == (False,)
    assert daemon.messages() == [*queries(caller), ("reply", False)]


def test_switch_that_cannot_be_saved_is_checked_for_each_policy(daemon, root, switches):
    switches.set_switch("cellular", [2, 4], True)
    daemon.start()
    with files.read_only(files.POLICY_FILE.parent):
        assert root.ask(write_of("cellular", False, address=SWITCH)) == (False,)
    assert asked(daemon) == 3 * process_query(root)


def test_repeated_writes_are_checked_afresh(daemon, root):
    daemon.start()
    for write in [root.call(write_of(LOCATION, True)) for _ in range(3)]:
        assert root.answer(write).body == (True,)
    assert asked(daemon) == 3 * process_query(root)


def test_own_work_is_not_checked(daemon, switches):
    switches.set_switch("cellular", [1, 2], True)
    files.store({"CameraEnabled": False})
    files.store({"cellular": False}, files.SWITCH_FILE)
    daemon.start_observed()
    assert asked(daemon) == []
    assert [call for call in switches.calls() if call.startswith("setKeyValue")
            ] == ["setKeyValue cellular false"]
    assert files.stored()[LOCATION] == "true"


def test_announcements_of_plugins_are_not_checked(daemon, switches, lock_plugin):
    switches.set_switch("cellular", [2], True)
    lock = lock_plugin(LOCATION)
    daemon.start()
    switches.announce("cellular", True)
    lock.set_locked(LOCATION)
    lock.announce(LOCATION, True)
    assert daemon.messages() == [
        announcement(LOCATION, True), ("signal", "SwitchChanged", "cellular", True), LOCATION_OFF]
