# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The verbs of the client for access switches, and the effect of switches on policies."""

import re

import pytest

from testbed import govctl
from testbed.files import store

CAMERA, WLAN, MICROPHONE = 1, 4, 20  # the numbers of policies


def test_without_a_plugin_there_are_none(process):
    process.start()
    listed = govctl.run("switch list")
    assert (listed.code, listed.out) == (0, "")
    one = govctl.run("switch get radio")
    assert one.code == 2
    assert "no access switches" in one.err


def test_list_shows_switches_in_order(process, switches):
    switches.set_switch("spy", [CAMERA, MICROPHONE, 999], True)
    switches.set_switch("radio", [WLAN], False)
    switches.set_switch("idle", [], True)
    process.start()
    assert govctl.run("switch list").out == (
        '"idle"  on  governs nothing\n'
        '"radio"  off  WlanEnabled\n'
        '"spy"  on  CameraEnabled, MicrophoneEnabled, 999\n')
    assert govctl.run("switch list --keys").out == "idle\nradio\nspy\n"
    assert [(switch["key"], switch["value"]) for switch in
            govctl.result("switch list")["switches"]] == [
        ("idle", True), ("radio", False), ("spy", True)]
    assert govctl.result("switch list --keys")["keys"] == ["idle", "radio", "spy"]


def test_get_prints_the_value(process, switches):
    switches.set_switch("radio", [WLAN], False)
    switches.set_switch("spy", [CAMERA], True)
    process.start()
    off = govctl.run("switch get radio")
    assert (off.out, off.code) == ("off\n", 0)
    assert govctl.run("switch get spy").out == "on\n"
    assert govctl.run("switch get -q radio").code == 1
    assert govctl.run("switch get -q spy").code == 0
    assert govctl.result("switch get radio")["value"] is False


@pytest.mark.parametrize("verb, name, hint", [
    ("switch get rado", "rado", "did you mean radio?"),
    ("switch set rado on", "rado", "did you mean radio?"),
    ("switch get xyz", "xyz", '"govctl switch list --keys" names them')])
def test_unknown_switch_gets_the_nearest(process, switches, verb, name, hint):
    switches.set_switch("radio", [WLAN], False)
    process.start()
    unknown = govctl.run(verb)
    assert (unknown.code, unknown.err) == (2, f'govctl: unknown switch "{name}"; {hint}\n')
    assert govctl.run(*verb.split(), "--json").error == "unknown-switch"
    assert not [call for call in switches.calls() if "setKeyValue" in call]


def test_set_shows_which_policies_changed(process, switches):
    switches.set_switch("spy", [CAMERA, MICROPHONE], True)
    store({"MicrophoneEnabled": False})
    process.start()
    text = govctl.run("switch set spy off")
    assert (text.code, text.lines[:2]) == (
        0, ['switch "spy": on -> off', "  CameraEnabled: on -> off"])
    assert switches.value("spy") is False
    result = govctl.result("switch set spy on")
    assert (result["before"], result["value"], result["changed"]) == (False, True, True)
    assert result["policies"] == [{"key": "CameraEnabled", "before": False, "value": True}]


def test_set_shows_that_nothing_changed(process, switches):
    switches.set_switch("spy", [CAMERA], True)
    process.start()
    text = govctl.run("switch set spy yes")
    assert (text.code, text.out) == (
        0, 'switch "spy" is on already; it was saved and recorded again\n')


def test_set_is_refused_by_the_plugin(process, switches):
    switches.set_switch("spy", [CAMERA], True)
    switches.set_entries("spy", result=3)
    process.start()
    refused = govctl.run("switch set spy off")
    assert refused.code == 3
    assert "its plugin did not take the value" in refused.err
    assert govctl.run("switch set spy off --json").error == "refused"


def test_set_is_not_for_everybody(process, switches):
    switches.set_switch("spy", [CAMERA], True)
    process.start()
    assert govctl.run("switch set spy off", user="guest").code == 4
    assert govctl.run("switch get spy", user="guest").out == "on\n"


def test_switch_explains_a_policy(process, switches):
    switches.set_switch("spy", [CAMERA], False)
    switches.set_switch("radio", [CAMERA, WLAN], True)
    process.start()
    text = govctl.run("explain CameraEnabled").out
    assert text.startswith("CameraEnabled reads off\n")
    for line in ('why +switch "spy" is off\n', "stored +on\n", 'switch +"radio" on\n',
                 'switch +"spy" off\n'):
        assert re.search(line, text)
    assert re.search('CameraEnabled +off +switch "spy" is off;', govctl.run("list --off").out)
    policy = govctl.result("explain CameraEnabled")["policy"]
    assert (policy["reason"], len(policy["switches"])) == ("switch", 2)
    assert govctl.run("status").code == 0


def test_policy_under_a_switch_can_be_set(process, switches):
    switches.set_switch("spy", [CAMERA], False)
    process.start()
    still = 'CameraEnabled still reads off, because switch "spy" is off; stored is '
    same = govctl.run("set CameraEnabled on")
    assert (same.code, same.lines[0]) == (0, still + "on already, and was saved again")
    other = govctl.run("set CameraEnabled off")
    assert (other.code, other.lines[0]) == (0, still + "now off")
    assert "it is stored off as well" in govctl.run("explain CameraEnabled").out
    assert govctl.result("set CameraEnabled off")["changed"] is False
    assert govctl.result("set CameraEnabled on")["changed"] is True


def test_names_with_any_characters(process, switches):
    """The plugin chooses the keys of switches, so they can contain any characters."""
    umlaut, nasty = "Schalter für WLAN", "a\nb\033[31m"
    switches.set_switch(umlaut, [WLAN], False)
    switches.set_switch(nasty, [CAMERA], True)
    process.start()
    plain = {"LC_ALL": "C"}
    assert govctl.run("switch", "get", umlaut, environment=plain).out == "off\n"
    listed = govctl.run("switch list --keys", environment=plain)
    assert listed.lines == [umlaut, r"a\u000ab\u001b[31m"]
    assert govctl.result("switch", "get", nasty, environment=plain)["key"] == nasty
