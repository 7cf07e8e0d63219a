# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The services of the test bed appear and leave, record their calls, and fail on request."""

import time

import pytest
from jeepney import DBusAddress, DBusErrorResponse, HeaderFields, new_method_call

from testbed.bus import BUS
from testbed.services import small
from testbed.services.service import (DEATH, SILENCE, Call, NameTaken, answer, error, late,
                                      standstill)
from testbed.waiting import wait_until

NAME = small.AudioPolicy.NAME
AUDIO = DBusAddress("/org/freedesktop/ohm/mdm", NAME, NAME)
CLOSE = new_method_call(AUDIO, "Set", "ss", ("microphone", "disabled"))
MODES = DBusAddress("/com/meego/usb_moded", *2 * [small.UsbModes.NAME])


def test_service_comes_and_goes(audio_policy, root):
    assert not root.owner(NAME)
    names = set()
    for _ in range(3):
        audio_policy.appear()
        audio_policy.appear()
        assert audio_policy.present
        names.add(root.owner(NAME))
        audio_policy.leave()
        audio_policy.leave()
        assert not audio_policy.present
        wait_until(lambda: not root.owner(NAME))
    assert len(names) == 3 and "" not in names


def test_each_service_has_a_name_of_its_own(audio_policy, usb_modes, root):
    audio_policy.appear()
    usb_modes.appear()
    assert root.owner(NAME) != root.owner(usb_modes.NAME)


def test_taken_name_is_not_taken_again(audio_policy, root):
    audio_policy.appear()
    second = small.AudioPolicy()
    with pytest.raises(NameTaken, match=NAME):
        second.appear()
    assert not second.present
    root.ask(CLOSE)  # the owner of the name still answers
    assert not audio_policy.microphone
    audio_policy.leave()
    wait_until(lambda: not root.owner(NAME))
    second.appear()
    second.leave()


def test_state_outlives_an_absence(audio_policy, root):
    audio_policy.appear()
    root.ask(CLOSE)
    audio_policy.leave()
    audio_policy.appear()
    assert not audio_policy.microphone


def test_calls_are_noted(network, root):
    wifi = DBusAddress("/net/connman/technology/wifi", "net.connman", "net.connman.Technology")
    heard = []
    network.called = heard.append
    network.appear()
    root.ask(new_method_call(wifi, "GetProperties"))
    root.ask(new_method_call(wifi, "SetProperty", "sv", ("Tethering", ("b", True))))
    root.refusal(new_method_call(wifi, "SetProperty", "sv", ("Type", ("b", True))))
    where = ("net.connman", wifi.object_path, wifi.interface)
    assert network.calls == heard == [
        Call(*where, "GetProperties", (), ""),
        Call(*where, "SetProperty", ("Tethering", True), ""),
        Call(*where, "SetProperty", ("Type", True), "net.connman.Error.InvalidProperty")]


def test_error_changes_nothing(audio_policy, root):
    audio_policy.appear()
    audio_policy.fail(error("org.example.Error"))
    with pytest.raises(DBusErrorResponse, match="org.example.Error"):
        root.ask(CLOSE)
    assert audio_policy.microphone
    assert len(audio_policy.calls) == 1
    audio_policy.mend()
    root.ask(CLOSE)
    assert not audio_policy.microphone


def test_one_member_fails(usb_modes, root):
    usb_modes.appear()
    usb_modes.fail(error("org.example.Error"), "set_whitelisted_modes")
    with pytest.raises(DBusErrorResponse, match="org.example.Error"):
        root.ask(new_method_call(MODES, "set_whitelisted_modes", "s", ("",)))
    root.ask(new_method_call(MODES, "set_whitelisted", "sb", ("mtp_mode", False)))


def test_answer_is_late(audio_policy, root):
    audio_policy.appear()
    audio_policy.fail(late(0.15))
    start = time.monotonic()
    root.ask(CLOSE)
    assert time.monotonic() - start >= 0.14
    assert not audio_policy.microphone


def test_silence(audio_policy, root):
    audio_policy.appear()
    audio_policy.fail(SILENCE)
    with pytest.raises(TimeoutError):
        root.ask(CLOSE, deadline=0.2)
    assert len(audio_policy.calls) == 1
    assert audio_policy.microphone


def test_wrong_answer(audio_policy, root):
    audio_policy.appear()
    audio_policy.fail(answer("is", 42, "text"))
    reply = root.answer(root.call(CLOSE))
    assert reply.header.fields[HeaderFields.signature] == "is"
    assert reply.body == (42, "text")
    assert not audio_policy.microphone


def test_death(audio_policy, root):
    audio_policy.appear()
    audio_policy.fail(DEATH)
    # The bus reports the end at once, without a time-out.
    with pytest.raises(DBusErrorResponse, match="NoReply"):
        root.ask(CLOSE, deadline=20)
    assert not audio_policy.present
    audio_policy.mend()
    audio_policy.appear()
    root.ask(CLOSE)


def test_late_answer_is_lost_with_the_service(audio_policy, root):
    audio_policy.appear()
    audio_policy.fail(late(0.1))
    serial = root.call(CLOSE)
    wait_until(lambda: audio_policy.calls)
    audio_policy.leave()
    reply = root.answer(serial)
    assert reply.header.fields[HeaderFields.error_name].endswith("NoReply")
    audio_policy.mend()
    audio_policy.appear()


def test_any_signal_is_sent(audio_policy, root):
    rule = f"type='signal',sender='{NAME}',member='Told'"
    audio_policy.appear()
    root.ask(new_method_call(BUS, "AddMatch", "s", (rule,)))
    audio_policy.signal(AUDIO.object_path, NAME, "Told", "i", 42)
    while (message := root.receive(timeout=10)).header.fields.get(HeaderFields.member) != "Told":
        pass
    assert message.body == (42,)


def test_services_stand_still(audio_policy, root):
    audio_policy.appear()
    with standstill():
        root.call(CLOSE)
        root.settle()
        assert audio_policy.microphone
    wait_until(lambda: not audio_policy.microphone)
