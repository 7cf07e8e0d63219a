# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Values of switches in files: which are read, the calls to the plugin, and a start's effects."""

import pytest

from testbed import files
from testbed.daemon import SAVE_FAILURE, announcement, event, event_text
from testbed.files import CAMERA_MARKER, POLICY_FILE, SWITCH_FILE, OpenWatch

CAMERA = "CameraEnabled"
FOLDER = SWITCH_FILE.parent / "switch.d"
SEED = FOLDER / "seed.conf"
NOTHING_TOLD = [
    "",
    "lens: true\n",
    "[switch]\nlens=true\n",
    "[policy]\n",
    # Unlike policies, the switches of a file are used all together or not at all.
    "[policy]\nlens=true\n<broken>\n",
]
# The value in the file, when the plugin announces it, and the enforced values of the policy: at the
# announcement (it has no value yet), with its default, and in the pass over all policies.
ENFORCEMENTS = [
    (None, "inside", [True, True]),
    (True, "inside", [False, True, True]),
    (False, "inside", [False, False, False]),
    (True, "never", [True, True]),
    (False, "never", [False, False]),
]


def told(plugin):
    """The values that the plugin got, in order."""
    return [call for call in plugin.calls() if call.startswith("setKeyValue ")]


def test_files_are_not_opened_without_a_plugin(daemon):
    for path in (SWITCH_FILE, SEED):
        files.store({"lens": True}, path)
    before = files.snapshot(SWITCH_FILE)
    watches = [OpenWatch(path) for path in (SWITCH_FILE, FOLDER, SEED)]
    daemon.start_observed()
    assert [watch.count for watch in watches] == [0, 0, 0]
    assert files.snapshot(SWITCH_FILE) == before
    assert daemon.switch("lens") is False
    assert daemon.complaints() == []

    # Without the single file, the folder would be read next.
    assert daemon.stop() == 0
    SWITCH_FILE.unlink()
    daemon.start()
    assert [watch.count for watch in watches[1:]] == [0, 0]
    assert not SWITCH_FILE.exists()


def test_folder_is_read_without_the_single_file(daemon, switches):
    files.store({"lens": True}, FOLDER / "seed")
    files.store({"radio": True}, FOLDER / ".hidden")
    files.store({"radio": True}, FOLDER / "below/seed")
    switches.set_switch("lens", [1], False)
    switches.set_switch("radio", [5], False)
    daemon.start_observed()
    assert told(switches) == ["setKeyValue lens true"]
    assert SWITCH_FILE.read_text() == "[policy]\nlens=true\n"
    assert daemon.complaints() == []

    # The folder was a seed: the next start reads the file that was made from it.
    assert daemon.stop() == 0
    files.store({"lens": False}, FOLDER / "seed")
    daemon.start()
    assert told(switches) == 2 * ["setKeyValue lens true"]


def test_plugin_gets_all_keys_in_order(daemon, switches):
    files.write(SWITCH_FILE, "[other]\ngate=true\n\n[policy]\nradio=true\nCameraEnabled=true\n"
                             "lens=false\nno such switch=1\n")
    switches.set_switch("lens", [1], True)
    switches.set_switch("radio", [5], False)
    daemon.start()
    assert told(switches) == ["setKeyValue radio true", "setKeyValue CameraEnabled true",
                              "setKeyValue lens false", "setKeyValue no such switch true"]


def test_values_that_are_no_booleans_are_skipped(daemon, switches):
    odd = {"lens": "yes", "a": "True", "b": "", "c": "2"}
    files.store({**odd, "radio": True}, SWITCH_FILE)
    switches.set_switch("lens", [], False)
    switches.set_switch("radio", [], False)
    daemon.start_observed()
    assert told(switches) == ["setKeyValue radio true"]
    assert files.stored(SWITCH_FILE) == {**odd, "radio": "true"}
    assert daemon.complaints() == []


@pytest.mark.parametrize("path", [SWITCH_FILE, SEED])
@pytest.mark.parametrize("content", NOTHING_TOLD)
def test_file_without_values(daemon, switches, content, path):
    files.write(path, content)
    switches.set_switch("lens", [1], False)
    daemon.start_observed()
    assert told(switches) == []
    assert path.read_text() == content
    assert daemon.complaints() == []


def test_refused_value_is_not_recorded(daemon, switches):
    files.store({"gate": True, "lens": True}, SEED)
    switches.set_switch("lens", [], False)
    switches.set_entries("lens", result=3)
    daemon.start_observed()
    assert not SWITCH_FILE.exists()
    assert daemon.records() == []
    assert [line for line in daemon.logged() if "set value" in line] == [
        f'warning|default|AccessSwitch plugin failed to set value for key: "{key}"'
        for key in ("gate", "lens")]
    assert "warning|default|Return code: 3" in daemon.logged()


def test_accepted_values_are_saved(daemon, switches):
    files.store({"lens": True}, FOLDER / "1")
    files.store({"radio": "0"}, FOLDER / "2")
    switches.set_switch("lens", [], False)
    switches.set_switch("radio", [], True)
    daemon.start()
    assert SWITCH_FILE.read_text() == "[policy]\nlens=true\nradio=false\n"
    assert switches.value("lens") is True
    assert switches.value("radio") is False


@pytest.mark.parametrize("path", [SWITCH_FILE, SEED])
def test_values_of_switches_are_recorded_and_those_of_policies_are_not(daemon, switches, path):
    values = {"radio": False, "cellular": True, "lens": True}
    changes = [("radio", True, False), ("cellular", True, True), ("lens", False, True)]
    files.store(values, path)
    files.store({CAMERA: False})
    for type_, (key, old, _) in enumerate(changes, 3):
        switches.set_switch(key, [type_], old)
    daemon.start_observed()
    assert daemon.records() == [event_text(*change) for change in changes]
    assert [words for words in daemon.said() if words[1] == "sendEventStringAlt"] == [
        event(*change) for change in changes]
    assert daemon.complaints() == []


def test_switches_go_before_policies(daemon, switches):
    files.store({"lens": True}, SWITCH_FILE)
    files.store({CAMERA: True})
    switches.set_switch("lens", [1], False)
    switches.set_entries("lens", announce="never")
    switches.hold("setKeyValue")
    policies = OpenWatch(POLICY_FILE)
    daemon.launch()
    switches.wait_for_call("holding setKeyValue")
    assert policies.count == 0
    switches.release()
    daemon.wait_until_ready()
    assert policies.count > 0
    assert CAMERA_MARKER.exists()


def test_announcements_during_the_start_are_taken(daemon, switches):
    """The policy has no value yet when its switch changes, so it is enforced as off at first."""
    files.store({"lens": True}, SWITCH_FILE)
    files.write(CAMERA_MARKER, "")
    switches.set_switch("lens", [1], False)
    switches.hold("keyValue")
    daemon.launch()
    switches.wait_for_call("holding keyValue")  # the old value, for the record
    assert CAMERA_MARKER.exists()
    before = len(switches.calls())
    switches.release()
    switches.wait_for_call("setKeyValue lens true", before)
    daemon.wait_until_ready()
    assert daemon.policy(CAMERA) is True
    assert daemon.announcements() == []


def test_restart_keeps_values(daemon, switches):
    switches.set_switch("cellular", [1], True)
    switches.set_switch("radio", [3], True)
    daemon.start()
    assert daemon.set_switch("cellular", False) is True
    assert daemon.stop() == 0

    switches.set_entries("cellular", value=True)  # a plugin that does not save values
    before = len(told(switches))
    daemon.forget()
    daemon.start_observed()
    assert told(switches)[before:] == ["setKeyValue cellular false"]
    assert daemon.switch("cellular") is False
    assert daemon.switch("radio") is True
    assert daemon.policy(CAMERA) is False
    assert not CAMERA_MARKER.exists()
    assert daemon.records() == [event_text("cellular", True, False)]


def test_unsavable_value_stays_with_the_plugin(daemon, switches):
    files.store({"cellular": False}, SWITCH_FILE)
    switches.set_switch("cellular", [1], True)
    with files.read_only(SWITCH_FILE.parent):
        daemon.start_observed()
        cause, consequence = daemon.complaints()[:2]
    assert cause.startswith("warning|default|Error saving key file ")
    assert str(SWITCH_FILE) in cause
    assert consequence == SAVE_FAILURE
    assert daemon.records() == []
    assert switches.value("cellular") is False
    assert daemon.switch("cellular") is False


@pytest.mark.parametrize("value, announce, enforced", ENFORCEMENTS)
def test_enforcements_of_the_start(daemon, switches, audio_policy, value, announce, enforced):
    if value is not None:
        files.store({"radio": value}, SWITCH_FILE)
    switches.set_switch("radio", [20], True)
    switches.set_entries("radio", announce=announce)
    audio_policy.appear()
    daemon.start()
    assert [call.arguments[1] == "enabled" for call in audio_policy.calls] == enforced
    assert files.stored()["MicrophoneEnabled"] == "true"


def test_failing_switch_forces_its_policies_off(daemon, switches):
    switches.set_switch("cellular", [1], 3)
    daemon.start_observed()
    # Once when the default is stored, once in the pass over all policies.
    assert daemon.complaints() == 2 * [
        'warning|default|AccessSwitch plugin failed to retrieve value for key: "cellular"',
        "warning|default|Return code: 3"]
    assert not CAMERA_MARKER.exists()
    assert files.stored()[CAMERA] == "true"


def test_announcement_later_comes_to_the_bus(daemon, switches):
    """The event loop starts after the daemon has its name."""
    files.store({"cellular": True}, SWITCH_FILE)
    switches.set_switch("cellular", [1], False)
    switches.set_entries("cellular", announce="later")
    daemon.start_observed()
    daemon.transcript.wait_for(lambda message: message.member == "SwitchChanged")
    assert daemon.announcements() == [announcement(CAMERA, True),
                                      ("signal", "SwitchChanged", "cellular", True)]
