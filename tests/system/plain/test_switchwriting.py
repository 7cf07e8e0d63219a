# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Setting an access switch: the plugin decides, then the change is saved and recorded."""

import syslog

import pytest

from testbed import files
from testbed.bus import SWITCH, write_of
from testbed.daemon import announcement, event, event_text

SWITCHED_OFF = ("signal", "SwitchChanged", "cellular", False)
CAMERA_OFF = announcement("CameraEnabled", False)
NOT_SAVED = ('warning|default|Failed to save configuration to file "/etc/policy/switch.conf"')


def unreadable(key, code):
    """The log lines when the plugin cannot read a value."""
    return [f"warning|default|AccessSwitch plugin failed to retrieve value for key: {key}",
            f"warning|default|Return code: {code}"]


def refused(key, code):
    """The log lines when the plugin refuses a value."""
    return [f"warning|default|AccessSwitch plugin failed to set value for key: {key}",
            f"warning|default|Return code: {code}"]


def test_other_value(daemon, switches, system_log):
    switches.set_switch("cellular", [1, 2], True)
    daemon.start()
    before, policies = len(switches.calls()), files.snapshot(files.POLICY_FILE)
    assert daemon.set_switch("cellular", False) is True
    assert switches.calls(before) == ["keyValue cellular", "setKeyValue cellular false",
                                      "keyPolicyTypes"]
    assert daemon.said() == [CAMERA_OFF, announcement("LocationEnabled", False), SWITCHED_OFF,
                             event("cellular", True, False), ("reply", True)]
    assert daemon.records() == [event_text("cellular", True, False)]
    record = system_log.records()[-1]
    assert (record.priority, record.program) == (syslog.LOG_USER | syslog.LOG_INFO, "govd")
    assert files.SWITCH_FILE.read_text() == "[policy]\ncellular=false\n"
    assert files.snapshot(files.POLICY_FILE) == policies
    assert daemon.switch("cellular") is False
    assert not files.CAMERA_MARKER.exists()
    assert daemon.logged() == []


def test_same_value(daemon, switches):
    switches.set_switch("cellular", [1], True)
    switches.set_entries("cellular", announce="never")
    daemon.start()
    assert daemon.set_switch("cellular", True) is True
    written = files.snapshot(files.SWITCH_FILE)
    daemon.forget()
    before = len(switches.calls())
    assert daemon.set_switch("cellular", True) is True
    assert switches.calls(before) == ["keyValue cellular", "setKeyValue cellular true"]
    assert daemon.records() == [event_text("cellular", True, True)]
    again = files.snapshot(files.SWITCH_FILE)
    assert again != written and again[0] == written[0]  # written anew


@pytest.mark.parametrize("key, shown, result", [
    ("cellular", '"cellular"', 3), ("cellular", '"cellular"', 1), ("cellular", '"cellular"', -22),
    ('no "such"', r'"no \"such\""', -1)])
def test_refusal_of_the_plugin(daemon, switches, key, shown, result):
    switches.set_switch("cellular", [1], True)
    switches.set_entries("cellular", result=result)
    daemon.start()
    assert daemon.set_switch(key, False) is False
    # Nor can an unknown switch be read.
    first = [] if key == "cellular" else unreadable(shown, result)
    assert daemon.logged() == first + refused(shown, result)
    assert [words[:2] for words in daemon.messages()] == [("call", "GetConnectionUnixProcessID"),
                                                          ("reply", False)]
    assert daemon.records() == []
    assert not files.SWITCH_FILE.exists()
    assert files.CAMERA_MARKER.exists()
    assert switches.value("cellular") is True


def test_unreadable_old_value_is_recorded_as_false(daemon, switches):
    switches.set_switch("cellular", [], 5)
    daemon.start()
    assert daemon.set_switch("cellular", True) is True
    assert daemon.logged() == unreadable('"cellular"', 5)
    assert daemon.records() == [event_text("cellular", False, True)]


def test_announcement_inside_goes_before_the_file(daemon, switches, root, system_log):
    """Holds the daemon at the announcement: the plugin has the value, the file does not."""
    switches.set_switch("cellular", [1], True)
    daemon.start()
    before, records = len(switches.calls()), len(system_log.records())
    switches.hold("keyPolicyTypes")
    call = root.call(write_of("cellular", False, address=SWITCH))
    switches.wait_for_call("holding", before)
    assert switches.value("cellular") is False
    assert not files.SWITCH_FILE.exists()
    assert len(system_log.records()) == records
    switches.release()
    assert root.answer(call).body == (True,)
    assert files.stored(files.SWITCH_FILE)["cellular"] == "false"
    assert len(daemon.records()) == 1


def test_announcement_later_is_enforced_later(daemon, switches, transcript):
    switches.set_switch("cellular", [1], True)
    switches.set_entries("cellular", announce="later")
    daemon.start()
    assert daemon.set_switch("cellular", False) is True
    transcript.wait_for(lambda message: message.member == "SwitchChanged")
    assert not files.CAMERA_MARKER.exists()
    assert daemon.said() == [event("cellular", True, False), ("reply", True), CAMERA_OFF,
                             SWITCHED_OFF]


def test_without_announcement_nothing_is_enforced(daemon, switches):
    switches.set_switch("cellular", [1], True)
    switches.set_entries("cellular", announce="never")
    daemon.start()
    assert daemon.set_switch("cellular", False) is True
    assert daemon.said() == [event("cellular", True, False), ("reply", True)]
    assert files.CAMERA_MARKER.exists()
    assert daemon.policy("CameraEnabled") is False
    assert files.stored(files.SWITCH_FILE)["cellular"] == "false"


def test_locks_of_policies_do_not_count(daemon, switches, lock_plugin):
    switches.set_switch("cellular", [], True)
    locks = lock_plugin("cellular")
    locks.set_locked("cellular")
    daemon.start()
    before = len(locks.calls())
    assert daemon.set_switch("cellular", False) is True
    assert daemon.switch("cellular") is False
    assert locks.calls(before) == []


@pytest.mark.parametrize("signature, value, text, saved", [
    ("i", 1, "1", "true"), ("i", 0, "0", "false"), ("s", "no", "no", "true"),
    ("s", "0", "0", "false"), ("s", "FALSE", "FALSE", "false"), ("s", "", "", "false"),
    ("av", [("b", True)], "", "false")])
def test_other_kinds_of_values(daemon, switches, signature, value, text, saved):
    """The plugin and the event get the value itself, the file its boolean reading."""
    switches.set_switch("cellular", [], True)
    daemon.start()
    before = len(switches.calls())
    assert daemon.set_switch("cellular", value, signature) is True
    assert [call for call in switches.calls(before) if call.startswith("setKeyValue")] == [
        f"setKeyValue cellular {text}".strip()]
    assert files.stored(files.SWITCH_FILE)["cellular"] == saved
    assert daemon.records() == [event_text("cellular", True, text)]
    assert daemon.running


@pytest.mark.parametrize("value", [True, False])
def test_value_that_is_not_saved(daemon, switches, value):
    """The plugin keeps the new value, and its announcement is not taken back."""
    switches.set_switch("cellular", [1], not value)
    daemon.start()
    assert daemon.set_switch("cellular", not value) is True
    before = files.snapshot(files.SWITCH_FILE)
    daemon.forget()
    with files.read_only("/etc/policy"):
        assert daemon.set_switch("cellular", value) is False
    error, not_saved = daemon.logged()
    assert error.startswith("warning|default|Error saving key file ")
    assert not_saved == NOT_SAVED
    assert daemon.said() == [announcement("CameraEnabled", value),
                             ("signal", "SwitchChanged", "cellular", value), ("reply", False)]
    assert daemon.records() == []
    assert switches.value("cellular") is daemon.switch("cellular") is value
    assert files.CAMERA_MARKER.exists() is value
    assert files.snapshot(files.SWITCH_FILE) == before


def test_malformed_file_is_left_as_it_is(daemon, switches):
    switches.set_switch("cellular", [], True)
    daemon.start()
    files.write(files.SWITCH_FILE, "no key file\n")
    before = files.snapshot(files.SWITCH_FILE)
    assert daemon.set_switch("cellular", False) is False
    error, not_saved = daemon.logged()
    assert error.startswith("warning|default|Error loading key file ")
    assert not_saved == NOT_SAVED
    assert files.snapshot(files.SWITCH_FILE) == before
    assert switches.value("cellular") is False
    assert daemon.records() == []


@pytest.mark.parametrize("content, key, shown", [
    ("", "a=b", "a=b"), ("", "", ""), ("", "#a", "#a"), ("", "a ", "a "),
    ("", "a\nb=true\nc", r"a\nb=true\nc"), ("", "Encoding", "Encoding"),
    ("[policy]\nb=true\n", "Encoding", "Encoding"),
    ("[policy]\nEncoding=UTF-8\nb=true\n", "Encoding", "Encoding"),
    ("no key file\n", "a=b", "a=b")])
def test_key_that_the_file_cannot_hold(daemon, switches, content, key, shown):
    """The plugin is not called: it would keep and announce a value that is then refused."""
    switches.set_switch(key, [1], True)
    daemon.start()
    if content:
        files.write(files.SWITCH_FILE, content)
    before, written = len(switches.calls()), files.snapshot(files.SWITCH_FILE)
    assert daemon.set_switch(key, False) is False
    assert switches.calls(before) == []
    assert daemon.said() == [("reply", False)]
    assert daemon.logged() == [
        f'warning|default|Error saving key file 1 Key file cannot hold the key "{shown}"',
        NOT_SAVED]
    assert daemon.records() == []
    assert files.snapshot(files.SWITCH_FILE) == written
    assert files.CAMERA_MARKER.exists()


def test_key_of_the_library_is_taken_behind_another_group(daemon, switches):
    switches.set_switch("Encoding", [], True)
    daemon.start()
    files.write(files.SWITCH_FILE, "[other]\nx=1\n")
    assert daemon.set_switch("Encoding", False) is True
    assert files.SWITCH_FILE.read_text() == "[other]\nx=1\n\n[policy]\nEncoding=false\n"
    assert daemon.logged() == []


def test_saving_works_again(daemon, switches):
    switches.set_switch("cellular", [], True)
    daemon.start()
    with files.read_only("/etc/policy"):
        assert daemon.set_switch("cellular", False) is False
    daemon.forget()
    assert daemon.set_switch("cellular", False) is True
    assert files.stored(files.SWITCH_FILE)["cellular"] == "false"
    # The plugin has accepted the value at the first write.
    assert daemon.records() == [event_text("cellular", False, False)]
    assert daemon.logged() == []
