# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Reads of access switches: the daemon asks the plugin each time."""

import pytest

from testbed import files
from testbed.bus import SWITCH, read_of

BIG = (1 << 31) - 1


def failure(key, code):
    """The log lines when the plugin cannot read a value."""
    return [f"warning|default|AccessSwitch plugin failed to retrieve value for key: {key}",
            f"warning|default|Return code: {code}"]


@pytest.mark.parametrize("told, value, log", [
    (True, True, []),
    (False, False, []),
    *[(code, False, failure('"cellular"', code)) for code in (3, -17, 0, 1)],
    *[(odd, False, ['warning|default|Unknown value type "cellular"'])
      for odd in ("true", None, [True])],
])
def test_value(daemon, switches, root, told, value, log):
    switches.set_switch("cellular", [], told)
    daemon.start()
    before = len(switches.calls())
    assert root.ask(read_of("cellular", SWITCH)) == (("b", value),)
    assert daemon.logged() == log
    assert switches.calls(before) == ["keyValue cellular"]


def test_unknown_switch_is_asked_of_the_plugin(daemon, switches):
    switches.state = {"unknown": -2}
    daemon.start()
    before = len(switches.calls())
    assert daemon.switch('a "b"') is False
    assert daemon.logged() == failure(r'"a \"b\""', -2)
    assert switches.calls(before) == ['keyValue a "b"']


def test_without_a_plugin_there_is_nothing(daemon):
    daemon.start_observed()
    assert daemon.switch_keys() == []
    assert daemon.switch_types("cellular") == []
    assert daemon.switch("cellular") is False
    assert daemon.set_switch("cellular", True) is False
    assert daemon.complaints() == []
    assert daemon.records() == []
    assert not files.SWITCH_FILE.exists()


def test_keys_are_those_of_the_plugin(daemon, switches):
    daemon.start()
    assert daemon.switch_keys() == []
    switches.set_switch("one", [1, 2], True)
    switches.set_switch("Funk aus", [], False)
    switches.set_switch("", [5], 7)
    assert sorted(daemon.switch_keys()) == ["", "Funk aus", "one"]


def test_keys_stay_in_the_order_of_the_table(daemon, switches):
    for number in range(20):
        switches.set_switch(f"{number}", [number], True)
    daemon.environment["QT_HASH_SEED"] = "0"
    daemon.start()
    found = daemon.switch_keys()
    assert sorted(found) == sorted(map(str, range(20))) != found
    assert daemon.switch_keys() == found


@pytest.mark.parametrize("types", [
    [], [1], [36, 1, 20, 1], [0, -1, 46, BIG, -BIG]])
def test_types_are_those_of_the_plugin(daemon, switches, types):
    switches.set_switch("other", [7], True)
    switches.set_switch("cellular", types, True)
    daemon.start()
    assert daemon.switch_types("cellular") == types


def test_unknown_switch_has_no_types(daemon, switches):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    assert daemon.switch_types("Cellular") == daemon.switch_types("") == []
    assert daemon.switch_keys() == ["cellular"]  # a read does not create a switch
    assert daemon.logged() == []


def test_every_read_asks_anew(daemon, switches):
    switches.set_switch("cellular", [1], True)
    daemon.start()
    assert daemon.switch("cellular") is True
    before = len(switches.calls())
    switches.set_switch("cellular", [2, 3], False)
    assert daemon.switch("cellular") is False
    assert daemon.switch_types("cellular") == [2, 3]
    assert daemon.switch_keys() == ["cellular"]
    assert switches.calls(before) == ["keyValue cellular", "keyPolicyTypes", "keyPolicyTypes"]
