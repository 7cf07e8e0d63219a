# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The verbs of the client that read, change and explain policies."""

import re

import pytest

from testbed import govctl
from testbed.files import POLICY_FILE, store, stored, write
from testbed.policies import KEYS
from testbed.services.service import late

CAMERA = "CameraEnabled"


def test_list_shows_every_policy(process):
    process.start()
    listed = govctl.run("list")
    assert (listed.code, listed.err) == (0, "")
    assert [line.split(" ")[0] for line in listed.lines] == KEYS[1:]
    result = govctl.result("list")
    assert [(row["type"], row["key"]) for row in result["policies"]] == list(enumerate(KEYS))[1:]
    camera = govctl.policy_in(result, CAMERA)
    assert (camera["value"], camera["stored"], camera["reason"]) == (True, True, "stored")


def test_list_can_leave_out_what_is_on(process):
    store({CAMERA: False, "UserReportExportEnabled": True})
    process.start()
    assert re.match("CameraEnabled +off ", govctl.run("list --off").out)
    assert len(govctl.result("list --off")["policies"]) == 1
    assert govctl.run("list --off --keys").out == "CameraEnabled\n"
    assert govctl.result("list --off --keys Vpn*")["keys"] == []


def test_list_has_fields_for_programs(process, switches):
    switches.set_switch("radio", [4], False)
    process.start()
    assert govctl.run("list Wlan* --fields key,value,stored,reason,enforced,switches").out == (
        "WlanEnabled\toff\ton\tswitch\tno\tradio\n")
    assert govctl.run("list --fields key,colour").code == 2
    assert govctl.run("list --fields key --json").error == "usage"


def test_bare_name_is_a_summary(process, switches):
    switches.set_switch("radio", [4], False)
    store({CAMERA: False})
    process.start()
    text = govctl.run("").out
    assert "CameraEnabled off" in text and '"radio" off' in text
    result = govctl.result("")
    assert (result["off"], result["offBySwitch"], result["switchesOff"]) == (3, 1, ["radio"])


def test_listed_keys_need_no_daemon():
    assert govctl.run("list --keys").lines == govctl.result("list --keys")["keys"] == KEYS[1:]


def test_get_prints_the_value(process):
    store({CAMERA: False})
    process.start()
    off = govctl.run("get CameraEnabled")
    assert (off.out, off.code) == ("off\n", 0)
    assert govctl.run("get MicrophoneEnabled").out == "on\n"
    result = govctl.result("get CameraEnabled")
    assert (result["key"], result["value"]) == (CAMERA, False)


def test_get_answers_quietly(process):
    store({CAMERA: False})
    process.start()
    off = govctl.run("get -q CameraEnabled")
    assert (off.code, off.out, off.err) == (1, "", "")
    on = govctl.run("get MicrophoneEnabled --quiet")
    assert (on.code, on.out, on.err) == (0, "", "")
    json = govctl.run("get -q --json CameraEnabled")
    assert (json.code, json.result["value"]) == (1, False)


def test_set_shows_what_changed(process):
    process.start()
    text = govctl.run("set CameraEnabled off")
    assert (text.code, text.lines[0]) == (0, "CameraEnabled: on -> off")
    assert stored()[CAMERA] == "false"
    result = govctl.result("set CameraEnabled on")
    assert (result["before"], result["requested"], result["changed"]) == (False, True, True)
    assert (result["policy"]["value"], result["policy"]["stored"]) == (True, True)


def test_set_shows_that_nothing_changed(process):
    process.start()
    text = govctl.run("set CameraEnabled on")
    assert (text.code, text.out) == (
        0, "CameraEnabled is on already; it was saved and recorded again, and not enforced\n")
    assert govctl.result("set CameraEnabled on")["changed"] is False


@pytest.mark.parametrize("word, value", [
    *((word, True) for word in ("on", "true", "yes", "1", "ON", "On", "TRUE")),
    *((word, False) for word in ("off", "false", "no", "0", "False", "No"))])
def test_set_accepts_every_form_of_a_value(process, word, value):
    store({CAMERA: not value})
    process.start()
    assert govctl.run("set", CAMERA, word).code == 0
    assert process.policy(CAMERA) is value
    assert stored()[CAMERA] == str(value).lower()


@pytest.mark.parametrize("word", ["", "2", "ja", "on ", "onoff"])
def test_set_refuses_other_values(word):
    assert govctl.run("set", CAMERA, word).code == 2
    assert govctl.run("set", CAMERA, word, "--json").error == "usage"


def test_set_is_refused_by_a_lock(process, lock_plugin):
    lock = lock_plugin(CAMERA)
    process.start()
    lock.set_locked(CAMERA)
    refused = govctl.run("set CameraEnabled off")
    assert (refused.code, refused.out, refused.err.count("\n")) == (3, "", 1)
    assert "it is locked;" in refused.err
    assert govctl.run("set CameraEnabled off --json").error == "refused"
    assert stored()[CAMERA] == "true"


def test_set_is_refused_when_nothing_can_be_saved(process):
    process.start()
    write(POLICY_FILE, "this is no key file\n")
    refused = govctl.run("set CameraEnabled off")
    assert refused.code == 3
    assert "it could not be saved;" in refused.err
    assert govctl.run("get CameraEnabled").out == "on\n"


def test_set_is_not_for_everybody(process):
    process.start()
    refused = govctl.run("set CameraEnabled off", user="guest")
    assert (refused.code, refused.out) == (4, "")
    assert "govctl can" in refused.err
    assert govctl.run("set CameraEnabled off --json", user="guest").error == "not-allowed"
    assert govctl.run("get CameraEnabled", user="guest").out == "on\n"


def test_set_waits_for_a_slow_service(device_sentry, process):
    device_sentry.appear()
    process.start()
    device_sentry.fail(late(6), "Set")
    outcome = govctl.run("set UsbDevicesEnabled off")
    assert (outcome.code, outcome.out) == (0, "UsbDevicesEnabled: on -> off\n")
    assert outcome.err.startswith("govctl: waiting for the daemon")
    device_sentry.fail(late(3), "Set")
    assert govctl.run("set UsbDevicesEnabled on --json").err == ""


def test_explain_distinguishes_stored_value_and_lock(process, lock_plugin):
    lock = lock_plugin(CAMERA)
    store({"MicrophoneEnabled": False})
    process.start()

    def reason(key):
        return govctl.result("explain", key)["policy"]["reason"]
    assert (reason(CAMERA), reason("MicrophoneEnabled")) == ("stored", "stored")
    lock.set_locked(CAMERA)
    assert reason(CAMERA) == "lock"
    text = govctl.run("explain CameraEnabled").out
    assert text.startswith("CameraEnabled reads off\n")
    for line in ("why +locked, or the file was edited\n", "stored +on\n", "lock +yes, "):
        assert re.search(line, text)


def test_explain_shows_what_enforcing_does(process):
    process.start()
    assert "removes /var/lib/govd/camera_enabled" in govctl.run("explain CameraEnabled").out
    assert govctl.run("explain VpnEnabled").out.count("does nothing by itself") == 2
    assert len(govctl.result("explain CameraEnabled")["effects"]["off"]) == 2


def test_explain_knows_less_for_others(process, lock_plugin):
    lock_plugin(CAMERA)
    store({CAMERA: False})
    process.start()
    POLICY_FILE.chmod(0o600)
    camera = govctl.result("explain CameraEnabled", user="guest")["policy"]
    assert (camera["stored"], camera["reason"]) == (None, "unknown")
    assert "this user may not read" in govctl.run("explain CameraEnabled", user="guest").out


def test_policy_without_a_value_is_none(process, lock_plugin):
    lock = lock_plugin(CAMERA)
    lock.set_locked(CAMERA)
    process.start()
    lock.set_locked()
    none = govctl.run("get CameraEnabled")
    assert (none.out, none.code) == ("none\n", 0)
    assert govctl.run("get -q CameraEnabled").code == 1
    lines = govctl.run("explain CameraEnabled").lines
    assert ["lock", "no"] in [line.split() for line in lines]
    listed = govctl.policy_in(govctl.result("list --off"), CAMERA)
    assert (listed["value"], listed["reason"]) == (None, "none")
    assert govctl.run("set CameraEnabled on").lines[0] == "CameraEnabled: none -> on"
